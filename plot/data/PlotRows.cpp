#include "plot/data/PlotRows.h"

#include <numeric>
#include <utility>

namespace orrery {

bool PlotRows::choose(const RunResults& results, std::vector<std::uint32_t> rows) {
    if (results.stored) return read(results, std::move(rows));
    m_rows = std::move(rows);
    return false;
}

bool PlotRows::read(const RunResults& results, std::vector<std::uint32_t> rows) {
    std::vector<std::size_t> columns;
    for (std::size_t column = 0; column < results.responses.variables.size(); ++column) {
        if (results.responses.variables[column].includep()) columns.push_back(column);
    }
    if (rows == m_rows && columns == m_columns) return false;
    forget(); // the memory is free for what comes
    PlotRows chosen;
    chosen.m_cells = readStored(results, rows, columns);
    chosen.m_cellRows.resize(rows.size());
    std::iota(chosen.m_cellRows.begin(), chosen.m_cellRows.end(), 0U);
    for (const std::size_t column : columns) {
        chosen.m_responses.push_back(results.responses.variables[column]);
        chosen.m_maxima.push_back(results.table.maxima[column]);
        chosen.m_ranges.push_back(results.stored->ranges()[column]);
    }
    chosen.m_rows = std::move(rows);
    chosen.m_columns = std::move(columns);
    *this = std::move(chosen);
    return true;
}

PlotSource PlotRows::source(const RunResults& results) const {
    if (results.stored) {
        return {.cells = m_cells, .maxima = m_maxima, .responses = m_responses, .rows = m_cellRows, .ranges = m_ranges};
    }
    return {.cells = results.table.cells,
            .maxima = results.table.maxima,
            .responses = results.responses.variables,
            .rows = m_rows};
}

} // namespace orrery
