#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// Text from a user's file as it may stand in a one-line message: control characters escaped, long text shortened.
[[nodiscard]] std::string messageText(std::string_view text);

/// Message text in the quotation marks of every message: “text”. An object, because a call with a std::string would
/// find std::quoted as well.
struct Quoted {
    [[nodiscard]] std::string operator()(std::string_view text) const;
};
inline constexpr Quoted quoted;

/// Quoted texts in a row, of many only the first: "“a”, “b”, “c” and 12 more".
[[nodiscard]] std::string listed(const std::vector<std::string>& texts);

} // namespace orrery
