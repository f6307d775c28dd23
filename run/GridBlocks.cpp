#include "run/GridBlocks.h"

#include <algorithm>

namespace orrery {

namespace {

/// The largest box that begins at the row.
GridBlock blockAt(const std::vector<IndependentVariable>& variables, std::uint32_t row, std::uint32_t rows) {
    GridBlock block{.start = {}, .count = std::vector<std::size_t>(variables.size(), 1), .rows = 0};
    for (const IndependentVariable& variable : variables) {
        block.start.push_back(row / variable.stride() % variable.stridesPerCycle());
    }
    std::size_t slowest = variables.size() - 1;
    while (slowest > 0 && block.start[slowest] == 0 && rows >= variables[slowest - 1].stride()) {
        block.count[slowest] = variables[slowest].stridesPerCycle();
        --slowest;
    }
    const std::uint32_t stride = variables[slowest].stride();
    block.count[slowest] =
        std::min<std::size_t>(variables[slowest].stridesPerCycle() - block.start[slowest], rows / stride);
    block.rows = block.count[slowest] * stride;
    return block;
}

} // namespace

void forEachBlock(const SweepGrid& grid, std::uint32_t first, std::uint32_t rows,
                  const std::function<void(const GridBlock&)>& visit) {
    while (rows > 0) {
        const GridBlock block = blockAt(grid.variables, first, rows);
        visit(block);
        first += static_cast<std::uint32_t>(block.rows);
        rows -= static_cast<std::uint32_t>(block.rows);
    }
}

} // namespace orrery
