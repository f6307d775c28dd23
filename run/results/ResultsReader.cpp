#include "platform/values/OrreryError.h"
#include "run/results/Attributes.h"
#include "run/results/GridNames.h"
#include "run/results/NetCdf.h"
#include "run/results/ResultsFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orrery {

namespace {

/// Cells of a results file, which stays open for them.
class FileCells : public StoredCells {
public:
    FileCells(NetCdfFile file, std::vector<int> columns, std::vector<ColumnRange> ranges)
        : m_file(std::move(file)), m_columns(std::move(columns)), m_ranges(std::move(ranges)) {}

    [[nodiscard]] CellBlock read(const GridBlock& box, std::span<const std::size_t> columns) const override {
        requireBlockFits({.rows = static_cast<std::uint32_t>(box.rows), .columns = columns.size() + 1});
        CellBlock cells(box.rows * columns.size());
        std::vector<float> column(columns.size() > 1 ? box.rows : 0); // one lies there as it is wanted
        float* const values = columns.size() > 1 ? column.data() : cells.data();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            m_file.root().readFloats(m_columns[columns[i]], box.start, box.count, values);
            float* cell = cells.data() + i;
            for (const float value : column) {
                *cell = value;
                cell += columns.size();
            }
        }
        return cells;
    }
    [[nodiscard]] std::span<const ColumnRange> ranges() const override { return m_ranges; }

private:
    NetCdfFile m_file;
    std::vector<int> m_columns; // the variable of each response
    std::vector<ColumnRange> m_ranges;
};

/// Reads the parts of one results file, in the order in which one needs the other.
class Reader {
public:
    explicit Reader(const std::string& path) : m_path(path), m_file(NetCdfFile::open(path)), m_root(m_file.root()) {
        requireFormat();
    }

    KeptRun read() && {
        KeptRun kept;
        kept.results.grid = grid();
        kept.results.responses = responses();
        const NetCdfGroup run = recordGroup();
        kept.results.responses.labels = run.texts(NetCdfGroup::global, results_key::labels);
        kept.results.notes = run.texts(NetCdfGroup::global, results_key::notes);
        kept.record = briefRecord(run);
        readBytes(kept.record.model, run, "model");
        kept.record.engineText = bytes(run, "engine_text").value_or("");
        describeTable(kept.results);
        std::vector<ColumnRange> finite;
        for (const int variable : m_columns) {
            finite.push_back(
                range(variable, results_key::finiteRange).value_or(range(variable, results_key::range).value()));
        }
        kept.results.stored = std::make_shared<FileCells>(std::move(m_file), std::move(m_columns), std::move(finite));
        return kept;
    }

    ResultsHeader header() && {
        const NetCdfGroup run = recordGroup();
        ResultsHeader header{.record = briefRecord(run),
                             .rows = grid().nRowsOfData,
                             .notes = run.texts(NetCdfGroup::global, results_key::notes)};
        header.rowsFound = rowsFound(header.rows);
        return header;
    }

private:
    [[noreturn]] void refuse(const std::string& what) const {
        throw OrreryError(fmt::format("The results file is damaged: {}.", what), {.file = m_path},
                          "Use another copy of it, or run the simulation again.");
    }

    void requireFormat() const {
        const auto number = m_root.integer(NetCdfGroup::global, results_key::format);
        if (!number || !m_root.findVariable(maskName)) {
            throw OrreryError("This NetCDF file does not hold the results of a run.", {.file = m_path},
                              "Choose a file that was kept by Orrery.");
        }
        if (*number > results_key::formatNumber) {
            throw OrreryError(fmt::format("This results file has format {}, and this version of Orrery reads up to {}.",
                                          *number, results_key::formatNumber),
                              {.file = m_path}, "Open it with the version that wrote it, or a later one.");
        }
    }

    [[nodiscard]] int mask() const { return *m_root.findVariable(maskName); }

    float number(int variable, const char* name) const {
        const auto values = m_root.floats(variable, name);
        if (!values || values->size() != 1) refuse(fmt::format("a sweep variable lacks its {}", name));
        return values->front();
    }

    SweepGrid grid() const {
        SweepGrid grid;
        for (const int dimension : m_root.dimensionsOf(mask())) {
            grid.variables.push_back(sweepVariable(dimension));
        }
        std::uint64_t stride = 1;
        for (std::size_t i = grid.variables.size(); i-- > 0;) {
            grid.variables[i].setStride(static_cast<std::uint32_t>(stride));
            stride *= grid.variables[i].stridesPerCycle();
            if (stride == 0 || stride > std::numeric_limits<std::uint32_t>::max())
                refuse("its grid is empty or too large");
        }
        if (grid.variables.empty()) refuse("it has no grid");
        grid.nRowsOfData = static_cast<std::uint32_t>(stride);
        return grid;
    }

    IndependentVariable sweepVariable(int dimension) const {
        const auto coordinate = m_root.findVariable(m_root.dimensionName(dimension));
        if (!coordinate) refuse("a dimension lacks its values");
        const std::size_t length = m_root.dimensionLength(dimension);
        if (length > std::numeric_limits<std::uint32_t>::max()) refuse("a dimension is too long");
        IndependentVariable variable;
        variable.setName(m_root.text(*coordinate, results_key::longName).value_or(""));
        variable.setStart(number(*coordinate, results_key::start));
        variable.setStep(number(*coordinate, results_key::step));
        variable.setStop(number(*coordinate, results_key::stop));
        variable.setConstant(number(*coordinate, results_key::heldAt));
        variable.setStridesPerCycle(static_cast<std::uint32_t>(length));
        return variable;
    }

    /// Their columns' numbers must be 0, 1, 2 …
    ResponseVariables responses() {
        std::map<std::int64_t, int> byColumn;
        for (const int variable : m_root.variables()) {
            if (const auto column = m_root.integer(variable, results_key::column)) byColumn[*column] = variable;
        }
        ResponseVariables responses;
        std::map<std::pair<std::string, std::string>, ResponseVariable> known; // of one port there is one record
        for (const auto& [column, variable] : byColumn) {
            if (column != static_cast<std::int64_t>(m_columns.size())) refuse("a response is missing");
            if (m_root.dimensionsOf(variable) != m_root.dimensionsOf(mask())) refuse("a response has another grid");
            const std::string name = m_root.text(variable, results_key::longName).value_or("");
            const std::string port = m_root.text(variable, results_key::port).value_or("");
            responses.variables.push_back(known.try_emplace({name, port}, ResponseVariable(name, port)).first->second);
            responses.units.push_back(m_root.text(variable, results_key::units).value_or(""));
            m_columns.push_back(variable);
        }
        spreadColors(responses.variables);
        return responses;
    }

    NetCdfGroup recordGroup() const {
        const auto run = m_root.group(results_key::run);
        if (!run) refuse("the run's record is missing");
        return *run;
    }

    /// Without what may be long: the model's bytes and the engine's text.
    static RunRecord briefRecord(const NetCdfGroup& run) {
        RunRecord record;
        record.setup = file(run, "setup");
        readBytes(record.setup, run, "setup");
        record.model = file(run, "model");
        for (const auto& [name, text] : recordTexts(record)) {
            *text = run.text(NetCdfGroup::global, name).value_or("");
        }
        return record;
    }

    static std::optional<std::string> bytes(const NetCdfGroup& group, const std::string& name) {
        const auto variable = group.findVariable(name);
        return variable ? std::optional(group.readText(*variable)) : std::nullopt;
    }

    static RecordedFile file(const NetCdfGroup& group, const std::string& name) {
        return {.path = group.text(NetCdfGroup::global, (name + "_path").c_str()).value_or(""),
                .sha256 = group.text(NetCdfGroup::global, (name + "_sha256").c_str()).value_or(""),
                .size = 0,
                .bytes = {}};
    }

    static void readBytes(RecordedFile& file, const NetCdfGroup& group, const std::string& name) {
        file.bytes = bytes(group, name);
        file.size = file.bytes ? file.bytes->size() : 0;
    }

    std::uint32_t rowsFound(std::uint32_t rows) const {
        const std::int64_t found = m_root.integer(mask(), results_key::rowsFound).value_or(0);
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(found, 0, rows));
    }

    /// What the table was, but for its cells, which stay in the file.
    void describeTable(RunResults& results) const {
        results.table.rowsFound = rowsFound(results.grid.nRowsOfData);
        for (const int variable : m_columns) {
            results.table.maxima.push_back(std::max(noMaximum, range(variable, results_key::range).value().greatest));
        }
    }

    [[nodiscard]] std::optional<ColumnRange> range(int variable, const char* name) const {
        const auto values = m_root.floats(variable, name);
        if (!values && name == results_key::finiteRange) return std::nullopt;
        if (!values || values->size() != 2) refuse("a response lacks its range");
        return ColumnRange{values->front(), values->back()};
    }

    std::string m_path;
    NetCdfFile m_file;
    NetCdfGroup m_root;
    std::vector<int> m_columns; // the variable of each response
};

} // namespace

KeptRun openResultsFile(const std::string& path) {
    return Reader(path).read();
}

ResultsHeader readResultsHeader(const std::string& path) {
    return Reader(path).header();
}

} // namespace orrery
