#include "engine/TableWriter.h"

#include "platform/values/MacRoman.h"
#include "platform/values/OrreryError.h"
#include "run/ResponseVariables.h"

#include <array>
#include <charconv>

namespace orrery::engine {

namespace {

/// The last part of a path, as a table's label: encoded as the table is read, without what would end the label.
std::string labelOf(std::string_view path) {
    std::string label(path.substr(path.rfind('/') + 1)); // npos + 1 is the whole path
    for (char& character : label) {
        if (character == '\t' || character == '\n' || character == '\r') {
            character = ' ';
        }
    }
    return encodeMacRoman(label).value_or(label);
}

std::string headerLine(const PortNetwork& network, const RunPlan& plan, const std::vector<std::size_t>& recorders) {
    std::string header = "row";
    for (const IndependentVariable& variable : plan.grid.variables) {
        header += "\t" + labelOf(variable.name());
    }
    for (const std::size_t port : recorders) {
        header += "\t" + labelOf(network.ports()[port].path);
    }
    header += '\n';
    if (header.size() > headerLimit) {
        throw OrreryError(std::to_string(recorders.size()) + " recorded outputs make a header of " +
                              std::to_string(header.size()) + " bytes, but only " + std::to_string(headerLimit) +
                              " are read.",
                          {network.modelPath()}, "Record fewer outputs in the model.");
    }
    return header;
}

void appendCells(std::string& text, std::span<const double> cells) {
    for (std::size_t cell = 0; cell < cells.size(); ++cell) {
        if (cell > 0) {
            text += ' ';
        }
        appendNumber(text, static_cast<float>(cells[cell]));
    }
}

} // namespace

TableWriter::TableWriter(const PortNetwork& network, const RunPlan& plan, const std::vector<std::size_t>& recorders,
                         const std::string& tablePath)
    : m_plan(plan), m_columns(recorders.size()), m_table(tablePath) {
    m_table.buffer() += headerLine(network, plan, recorders);
    m_outputs.reserve(plan.outputFiles.size());
    for (const OutputFile& output : plan.outputFiles) {
        m_outputs.emplace_back(output.path);
    }
}

void TableWriter::append(std::uint32_t row, std::span<const double> values) {
    appendLeadingFields(row);
    const std::size_t cells = m_plan.cellCount();
    std::string& line = m_table.buffer();
    line += m_leading;
    for (std::size_t column = 0; column < m_columns; ++column) {
        line += m_plan.spatial() ? "\t{" : "\t";
        appendCells(line, values.subspan(column * cells, cells));
        if (m_plan.spatial()) {
            line += '}';
        }
    }
    line += '\n';
    m_table.flushIfLarge();
    for (std::size_t index = 0; index < m_outputs.size(); ++index) {
        std::string& text = m_outputs[index].buffer();
        text.append(m_leading).append("\t");
        appendCells(text, values.subspan((m_columns + index) * cells, cells));
        text += '\n';
        m_outputs[index].flushIfLarge();
    }
}

void TableWriter::publish() {
    for (ResultFile& output : m_outputs) {
        output.publish();
    }
    m_table.publish(); // last: a table means that the run was finished
}

void TableWriter::appendLeadingFields(std::uint32_t row) {
    m_leading = std::to_string(row);
    for (const IndependentVariable& variable : m_plan.grid.variables) {
        m_leading += '\t';
        appendNumber(m_leading, valueAtIndex(variable, row / variable.stride() % variable.stridesPerCycle()));
    }
}

void appendNumber(std::string& text, float value) {
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    text.append(digits.data(), result.ptr);
}

} // namespace orrery::engine
