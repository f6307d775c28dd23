#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace orrery {

/// The heights of one curve or surface: a column's values at the grid points times a factor. Nothing is owned.
/// A row beyond the end of the row list or of the cells is never read; its value counts as 0.
class Heights {
public:
    Heights(std::span<const float> cells, std::size_t columns, std::size_t column, std::span<const std::uint32_t> rows,
            float factor)
        : m_cells(cells), m_rows(rows), m_columns(columns), m_column(column), m_factor(factor) {}

    [[nodiscard]] float at(std::size_t point) const { return point < m_rows.size() ? inRow(m_rows[point]) : 0.0F; }

    /// Those of as many points as there is room for.
    void copyTo(std::span<float> heights, std::size_t firstPoint) const {
        const std::span rows = m_rows.subspan(std::min(firstPoint, m_rows.size()));
        const std::size_t count = std::min(heights.size(), rows.size());
        for (std::size_t n = 0; n < count; ++n) {
            heights[n] = inRow(rows[n]);
        }
        std::ranges::fill(heights.subspan(count), 0.0F);
    }

private:
    [[nodiscard]] float inRow(std::size_t row) const {
        const std::size_t cell = row * m_columns + m_column;
        return cell < m_cells.size() ? m_cells[cell] * m_factor : 0.0F;
    }

    std::span<const float> m_cells;
    std::span<const std::uint32_t> m_rows;
    std::size_t m_columns;
    std::size_t m_column;
    float m_factor;
};

} // namespace orrery
