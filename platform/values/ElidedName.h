#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace orrery {

/// A name that may be a path, shortened in the middle until it fits: what is after the last slash stays whole, and so
/// much of the beginning as there is room for. The text itself where it fits, and nothing where not even its end does.
/// @param fits whether a text is narrow enough; a part of such a text is, too
[[nodiscard]] std::string elidedName(std::string_view name, const std::function<bool(const std::string&)>& fits);

} // namespace orrery
