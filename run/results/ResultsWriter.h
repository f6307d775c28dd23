#pragma once

#include "platform/Files.h"
#include "run/RunResults.h"
#include "run/results/NetCdf.h"
#include "run/results/RunRecord.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orrery {

/// Writes a results file row by row, in the order of the grid; nothing is in place before finish().
class ResultsWriter {
public:
    /// Of the results the grid and the responses; they outlive this. @throws OrreryError as writeResultsFile, as all do
    ResultsWriter(const std::string& path, const RunResults& results);

    /// The next rows: as many as the cells have, row-major.
    void writeRows(std::span<const float> cells);
    /// After all rows, when also the results' notes and the count of rows found are known.
    void finish(const RunRecord& record);

private:
    void defineGrid(const std::vector<std::string>& names);
    void defineResponses(const std::vector<std::string>& names);
    void writeCoordinates();
    void writeMask();
    void writeRecord(const RunRecord& record);

    const RunResults& m_results;
    FileReplacement m_replacement;
    NetCdfFile m_file;
    NetCdfGroup m_root;
    std::vector<int> m_dimensions; // per sweep variable, as the next
    std::vector<int> m_coordinates;
    int m_mask = 0;
    std::vector<int> m_columns;         // per response, as the next
    std::vector<ColumnRange> m_ranges;  // of all values
    std::vector<ColumnRange> m_finites; // of the finite ones
    std::vector<float> m_column;        // one response of the rows that are written
    std::uint32_t m_row = 0;
};

} // namespace orrery
