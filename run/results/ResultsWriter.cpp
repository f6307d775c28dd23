#include "run/results/ResultsWriter.h"

#include "platform/values/OrreryError.h"
#include "run/GridBlocks.h"
#include "run/results/Attributes.h"
#include "run/results/GridNames.h"
#include "run/results/ResultsFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <utility>

namespace orrery {

namespace {

constexpr std::size_t rowsAtATime = 64U << 10U;
constexpr std::size_t mostDimensions = 32; // of a variable of the format

std::string checkedPath(const std::string& path, const RunResults& results) {
    const std::size_t dimensions = results.grid.variables.size();
    if (results.grid.nRowsOfData == 0) {
        throw OrreryError("There are no rows to keep.", {.file = path}, "Keep the results of a run that has some.");
    }
    if (dimensions > mostDimensions) {
        throw OrreryError(fmt::format("A results file holds at most {} sweep variables, and this run has {}.",
                                      mostDimensions, dimensions),
                          {.file = path}, "Sweep fewer, or keep the result table.");
    }
    return path;
}

/// Chunks of the mask: whole runs of the fastest variables, about that many rows.
std::vector<std::size_t> maskChunk(const SweepGrid& grid) {
    std::vector<std::size_t> chunk(grid.variables.size(), 1);
    std::size_t rows = 1;
    for (std::size_t i = chunk.size(); i-- > 0 && rows < rowsAtATime;) {
        chunk[i] =
            std::min<std::size_t>(grid.variables[i].stridesPerCycle(), std::max<std::size_t>(rowsAtATime / rows, 1));
        rows *= chunk[i];
    }
    return chunk;
}

void writeBytesOf(const NetCdfGroup& group, const std::string& name, const std::string& bytes) {
    if (bytes.empty()) return;
    const std::array dimension{group.defineDimension(name + "_bytes", bytes.size())};
    const std::array chunk{std::min<std::size_t>(bytes.size(), 1U << 20U)};
    const int variable = group.defineBytes(name, dimension, chunk);
    const std::array<std::size_t, 1> start{0};
    const std::array count{bytes.size()};
    group.writeBytes(variable, start, count, reinterpret_cast<const std::int8_t*>(bytes.data()));
}

void writeFileOf(const NetCdfGroup& group, const std::string& name, const RecordedFile& file) {
    if (!file.path.empty()) group.setText(NetCdfGroup::global, (name + "_path").c_str(), file.path);
    if (!file.sha256.empty()) group.setText(NetCdfGroup::global, (name + "_sha256").c_str(), file.sha256);
    if (file.bytes) writeBytesOf(group, name, *file.bytes);
}

} // namespace

ResultsWriter::ResultsWriter(const std::string& path, const RunResults& results)
    : m_results(results), m_replacement(checkedPath(path, results)),
      m_file(NetCdfFile::create(m_replacement.lend(), path)), m_root(m_file.root()),
      m_ranges(results.responses.variables.size()), m_finites(results.responses.variables.size()) {
    const GridNames names = gridNames(results);
    m_root.setText(NetCdfGroup::global, "Conventions", "CF-1.8");
    m_root.setInteger(NetCdfGroup::global, results_key::format, results_key::formatNumber);
    defineGrid(names.dimensions);
    defineResponses(names.responses);
    writeCoordinates();
}

void ResultsWriter::defineGrid(const std::vector<std::string>& names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        const IndependentVariable& variable = m_results.grid.variables[i];
        m_dimensions.push_back(m_root.defineDimension(names[i], variable.stridesPerCycle()));
        const int coordinate = m_root.defineFloats(names[i], {&m_dimensions.back(), 1});
        m_coordinates.push_back(coordinate);
        m_root.setText(coordinate, results_key::longName, variable.name());
        m_root.setFloats(coordinate, results_key::start, std::array{variable.start()});
        m_root.setFloats(coordinate, results_key::step, std::array{variable.step()});
        m_root.setFloats(coordinate, results_key::stop, std::array{variable.stop()});
        m_root.setFloats(coordinate, results_key::heldAt, std::array{variable.constant()});
    }
    m_root.setText(m_coordinates.back(), "comment", "Day of the year in which the run starts, from 1.");
    m_mask = m_root.defineBytes(maskName, m_dimensions, maskChunk(m_results.grid));
    m_root.setText(m_mask, results_key::longName, "Whether the result table had this row");
    m_root.setBytes(m_mask, "flag_values", std::array<std::int8_t, 2>{0, 1});
    m_root.setText(m_mask, "flag_meanings", "missing found");
}

void ResultsWriter::defineResponses(const std::vector<std::string>& names) {
    for (std::size_t column = 0; column < names.size(); ++column) {
        const ResponseVariable& response = m_results.responses.variables[column];
        const int variable = m_root.defineFloats(names[column], m_dimensions);
        m_columns.push_back(variable);
        m_root.setText(variable, results_key::longName, response.name());
        if (const std::string& unit = m_results.responses.unitOf(column); !unit.empty()) {
            m_root.setText(variable, results_key::units, unit);
        }
        m_root.setText(variable, results_key::port, response.identifier());
        m_root.setText(variable, "ancillary_variables", maskName);
        m_root.setInteger(variable, results_key::column, static_cast<std::int64_t>(column));
    }
}

void ResultsWriter::writeCoordinates() {
    for (std::size_t i = 0; i < m_coordinates.size(); ++i) {
        const IndependentVariable& variable = m_results.grid.variables[i];
        std::vector<float> values;
        for (std::uint32_t index = 0; index < variable.stridesPerCycle(); ++index) {
            values.push_back(valueAtIndex(variable, index));
        }
        m_root.writeFloats(m_coordinates[i], std::array<std::size_t, 1>{0}, std::array{values.size()}, values.data());
    }
}

void ResultsWriter::writeMask() {
    m_root.setInteger(m_mask, results_key::rowsFound, m_results.table.rowsFound);
    const std::uint32_t rows = m_results.grid.nRowsOfData;
    const std::uint32_t found = m_results.table.rowsFound;
    for (std::uint32_t first = 0; first < rows;) {
        const bool isFound = first < found;
        const std::uint32_t count = std::min<std::uint32_t>((isFound ? found : rows) - first, rowsAtATime);
        const std::vector<std::int8_t> values(count, isFound ? 1 : 0);
        forEachBlock(m_results.grid, first, count, [&](const GridBlock& block) {
            m_root.writeBytes(m_mask, block.start, block.count, values.data());
        });
        first += count;
    }
}

void ResultsWriter::writeRows(std::span<const float> cells) {
    const std::size_t columns = m_columns.size();
    const std::size_t count = columns == 0 ? 0 : cells.size() / columns;
    for (std::size_t first = 0; first < count; first += rowsAtATime) {
        const std::size_t rows = std::min(rowsAtATime, count - first);
        m_column.resize(rows);
        for (std::size_t column = 0; column < columns; ++column) {
            const float* cell = cells.data() + first * columns + column;
            for (float& value : m_column) {
                value = *cell;
                cell += columns;
                m_ranges[column].add(value);
                if (std::isfinite(value)) m_finites[column].add(value);
            }
            const float* values = m_column.data();
            forEachBlock(m_results.grid, m_row, static_cast<std::uint32_t>(rows), [&](const GridBlock& block) {
                m_root.writeFloats(m_columns[column], block.start, block.count, values);
                values += block.rows;
            });
        }
        m_row += static_cast<std::uint32_t>(rows);
    }
}

void ResultsWriter::finish(const RunRecord& record) {
    assert(m_columns.empty() || m_row == m_results.grid.nRowsOfData);
    for (std::size_t column = 0; column < m_columns.size(); ++column) {
        const auto set = [&](const char* key, const ColumnRange& range) {
            m_root.setFloats(m_columns[column], key, std::array{range.least, range.greatest});
        };
        set(results_key::range, m_ranges[column]);
        if (m_finites[column] != m_ranges[column]) set(results_key::finiteRange, m_finites[column]);
    }
    writeMask();
    writeRecord(record);
    m_file.close();
    m_replacement.finish();
}

void ResultsWriter::writeRecord(const RunRecord& record) {
    const NetCdfGroup run = m_root.defineGroup(results_key::run);
    writeFileOf(run, "setup", record.setup);
    writeFileOf(run, "model", record.model);
    for (const auto& [name, text] : recordTexts(record)) {
        if (!text->empty()) run.setText(NetCdfGroup::global, name, *text);
    }
    writeBytesOf(run, "engine_text", record.engineText);
    m_root.setText(NetCdfGroup::global, "title", "Results of the setup " + std::string(leafOf(record.setup.path)));
    m_root.setText(NetCdfGroup::global, "source", "Orrery " + record.version + ", engine " + record.enginePath);
    run.setTexts(NetCdfGroup::global, results_key::labels, m_results.responses.labels);
    run.setTexts(NetCdfGroup::global, results_key::notes, m_results.notes);
}

void writeResultsFile(const std::string& path, const RunResults& results, const RunRecord& record,
                      const std::function<void(double)>& progress) {
    ResultsWriter writer(path, results);
    const std::size_t columns = results.responses.variables.size();
    forEachRows(results, [&](std::uint32_t first, std::span<const float> cells) {
        for (std::size_t row = 0; row * columns < cells.size(); row += rowsAtATime) {
            if (progress) progress(static_cast<double>(first + row) / static_cast<double>(results.grid.nRowsOfData));
            const std::span<const float> rest = cells.subspan(row * columns);
            writer.writeRows(rest.first(std::min(rowsAtATime * columns, rest.size())));
        }
    });
    writer.finish(record);
}

RunResults keepTable(const std::string& path, SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                     const RunRecord& record, const TableReadOptions& options) {
    RunResults results = readResponses(std::move(grid), tree, tablePath);
    ResultsWriter writer(path, results);
    results.table = streamResultTable(
        tablePath, results.shape(), [&writer](std::span<const float> rows) { writer.writeRows(rows); }, options);
    addTableNotes(results);
    writer.finish(record);
    return results;
}

} // namespace orrery
