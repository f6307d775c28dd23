#pragma once

#include "engine/PortNetwork.h"
#include "engine/ResultFile.h"
#include "engine/RunPlan.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orrery::engine {

/// Writes the result table and, in a spatial run, each output's own file; none of them appears before publish().
class TableWriter {
public:
    /// @param recorders the ports of the table's columns
    /// @throws OrreryError when a file cannot be made or the header would be longer than is read
    TableWriter(const PortNetwork& network, const RunPlan& plan, const std::vector<std::size_t>& recorders,
                const std::string& tablePath);

    /// Appends a row. @param values the recorders' values, then those of the output files, all cells of a port together
    void append(std::uint32_t row, std::span<const double> values);
    /// Puts all files in place.
    void publish();

private:
    void appendLeadingFields(std::uint32_t row);

    const RunPlan& m_plan;
    std::size_t m_columns;
    ResultFile m_table;
    std::vector<ResultFile> m_outputs;
    std::string m_leading; // of the present row
};

/// Appends the shortest text that reads back as the same single precision number.
void appendNumber(std::string& text, float value);

} // namespace orrery::engine
