#pragma once

#include <cstddef>
#include <limits>
#include <string_view>

namespace orrery {

/// Single-character insertions, removals and replacements that make one text of the other; `limit` + 1 when more, which
/// is found sooner.
[[nodiscard]] std::size_t editDistance(std::string_view left, std::string_view right,
                                       std::size_t limit = std::numeric_limits<std::size_t>::max() - 1);

} // namespace orrery
