#pragma once

#include "run/SweepVariables.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace orrery {

/// A box of the grid: its first index and its length along every sweep variable.
struct GridBlock {
    std::vector<std::size_t> start;
    std::vector<std::size_t> count;
    std::size_t rows = 0;
};

/// Calls visit with boxes that make up `rows` rows of the grid from `first` on, in the rows' order: at most two for
/// each sweep variable.
void forEachBlock(const SweepGrid& grid, std::uint32_t first, std::uint32_t rows,
                  const std::function<void(const GridBlock&)>& visit);

} // namespace orrery
