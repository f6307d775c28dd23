#pragma once

#include "run/GridBlocks.h"
#include "run/table/CellBlock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <vector>

namespace orrery {

struct RunResults;

/// The least and the greatest of a column's finite values; of one that has none, least is above greatest.
struct ColumnRange {
    float least = std::numeric_limits<float>::infinity();
    float greatest = -std::numeric_limits<float>::infinity();

    void add(float value) {
        least = value < least ? value : least;
        greatest = value > greatest ? value : greatest;
    }
    friend bool operator==(const ColumnRange&, const ColumnRange&) = default;
};

/// Cells of results that lie elsewhere and are read as they are needed: those of a results file, which may be larger
/// than memory. Main thread.
class StoredCells {
public:
    virtual ~StoredCells() = default;

    /// The cells of those columns in a box of the grid: row-major, in the order of the grid and of `columns`.
    /// @throws OrreryError when they cannot be read, or do not fit into memory
    [[nodiscard]] virtual CellBlock read(const GridBlock& box, std::span<const std::size_t> columns) const = 0;
    [[nodiscard]] virtual std::span<const ColumnRange> ranges() const = 0; // per column
};

/// Calls visit with all rows of the results in their order, some at a time, row-major, and the number of the first.
/// @throws as StoredCells::read
void forEachRows(const RunResults& results,
                 const std::function<void(std::uint32_t first, std::span<const float> cells)>& visit);

/// The same row by row.
void forEachRow(const RunResults& results,
                const std::function<void(std::uint32_t row, std::span<const float> cells)>& visit);

/// The cells of those columns in rows of stored results, ascending ones. The rows that are chosen to be plotted are
/// read in one go, others by runs of consecutive ones. @throws as StoredCells::read
[[nodiscard]] CellBlock readStored(const RunResults& results, std::span<const std::uint32_t> rows,
                                   std::span<const std::size_t> columns);

} // namespace orrery
