#include "run/StoredCells.h"

#include "run/IndexSet.h"
#include "run/RunResults.h"

#include <algorithm>
#include <numeric>

namespace orrery {

namespace {

constexpr std::uint32_t rowsAtATime = 64U << 10U;

/// Every value of the axis variables, the held value of all others: the rows of currentIndexSet.
GridBlock chosenBox(std::span<const IndependentVariable> variables) {
    GridBlock box{.start = {}, .count = {}, .rows = 1};
    for (const IndependentVariable& variable : variables) {
        box.start.push_back(variable.onAxis() ? 0 : heldIndex(variable));
        box.count.push_back(variable.onAxis() ? variable.stridesPerCycle() : 1);
        box.rows *= box.count.back();
    }
    return box;
}

/// How many of the rows follow each other from the first on.
std::size_t consecutive(std::span<const std::uint32_t> rows) {
    std::size_t count = 1;
    while (count < rows.size() && rows[count] == rows[count - 1] + 1) {
        ++count;
    }
    return count;
}

} // namespace

void forEachRows(const RunResults& results,
                 const std::function<void(std::uint32_t first, std::span<const float> cells)>& visit) {
    if (!results.stored) return visit(0, results.table.cells);
    std::vector<std::size_t> columns(results.responses.variables.size());
    std::iota(columns.begin(), columns.end(), 0);
    const std::uint32_t all = results.grid.nRowsOfData;
    for (std::uint32_t first = 0; first < all; first += std::min(rowsAtATime, all - first)) {
        std::uint32_t row = first;
        forEachBlock(results.grid, first, std::min(rowsAtATime, all - first), [&](const GridBlock& block) {
            visit(row, results.stored->read(block, columns));
            row += static_cast<std::uint32_t>(block.rows);
        });
    }
}

void forEachRow(const RunResults& results,
                const std::function<void(std::uint32_t row, std::span<const float> cells)>& visit) {
    const std::size_t columns = results.responses.variables.size();
    std::uint32_t row = 0;
    forEachRows(results, [&](std::uint32_t /*first*/, std::span<const float> cells) {
        for (; !cells.empty(); cells = cells.subspan(columns)) {
            visit(row++, cells.first(columns));
        }
    });
    for (; columns == 0 && row < results.grid.nRowsOfData; ++row) { // rows of nothing, which are rows all the same
        visit(row, {});
    }
}

CellBlock readStored(const RunResults& results, std::span<const std::uint32_t> rows,
                     std::span<const std::size_t> columns) {
    if (std::ranges::equal(rows, currentIndexSet(results.grid.variables))) {
        return rows.empty() ? CellBlock() : results.stored->read(chosenBox(results.grid.variables), columns);
    }
    CellBlock cells(rows.size() * columns.size());
    float* out = cells.data();
    while (!rows.empty()) {
        const std::size_t run = consecutive(rows);
        forEachBlock(results.grid, rows.front(), static_cast<std::uint32_t>(run), [&](const GridBlock& block) {
            out = std::ranges::copy(results.stored->read(block, columns), out).out;
        });
        rows = rows.subspan(run);
    }
    return cells;
}

} // namespace orrery
