#pragma once

#include <string>
#include <vector>

namespace orrery {

/// The extended attribute that holds a file's access list.
inline constexpr const char* accessListName = "system.posix_acl_access";

/// An extended attribute that could not be copied, with the system's error number.
struct LostAttribute {
    std::string name;
    int error = 0;
};

/// Gives one open file the extended attributes of another one, its access list among them, or none when that has none.
/// `from` may be open for its path only. What the system makes out of a file's contents is left out; what only an
/// administrator may set is not missed.
[[nodiscard]] std::vector<LostAttribute> copyAttributes(int from, int to);

} // namespace orrery
