#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// A character of a row of the log on the grid of columns.
struct LogCell {
    std::size_t offset = 0; // of its first byte in the row
    int column = 0;
    int width = 1; // in columns: 0 combines with the character before, 2 is wide, a tab goes to the next eighth column
    char32_t shown = 0; // what stands for it: control and direction characters become visible ones
};

/// The row's characters as they are shown, up to the first one at or after `endColumn`.
[[nodiscard]] std::vector<LogCell> cellsOfRow(std::string_view utf8, int endColumn);

} // namespace orrery
