#pragma once

#include "plot/data/VertexData.h"
#include "run/RunResults.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orrery {

/// The rows of results that a plot draws: as they lie in the table, or, of stored results, what was read of them, the
/// included responses alone.
class PlotRows {
public:
    PlotRows() = default;
    /// @throws as choose
    PlotRows(const RunResults& results, std::vector<std::uint32_t> rows) { (void)choose(results, std::move(rows)); }

    /// Chooses rows of the results, ascending. Returns whether they had to be read: then what was built of the rows
    /// before is of other numbers. @throws as StoredCells::read, with nothing chosen
    bool choose(const RunResults& results, std::vector<std::uint32_t> rows);
    [[nodiscard]] const std::vector<std::uint32_t>& rows() const { return m_rows; }
    /// What a plot is built from, of the results that the rows were chosen of; both outlive it.
    [[nodiscard]] PlotSource source(const RunResults& results) const;
    /// The results are other ones.
    void forget() { *this = {}; }

private:
    bool read(const RunResults& results, std::vector<std::uint32_t> rows);

    std::vector<std::uint32_t> m_rows; // of the grid
    // Of stored results, per included response:
    std::vector<std::size_t> m_columns;
    std::vector<ResponseVariable> m_responses;
    std::vector<float> m_maxima;
    std::vector<ColumnRange> m_ranges;
    CellBlock m_cells;
    std::vector<std::uint32_t> m_cellRows; // 0, 1, 2 …
};

} // namespace orrery
