#include "document/ResultReading.h"

#include "run/Export.h"
#include "run/ResponseVariables.h"

#include <fmt/format.h>

#include <iterator>
#include <optional>
#include <utility>

namespace orrery {

std::string ResultReading::tablePath() const {
    return resultTablePath(m_source.services.run.temporaryDirectory);
}

const RunResults& ResultReading::build() {
    setResults({}); // what an earlier run left does not fit the new grid
    std::vector<std::string> notes = layOutGrid();
    RunResults built;
    readTable([&](const TableReadOptions& options) {
        built = m_source.keeping.read(m_results.grid, m_source.model.tree(), tablePath(), options);
    });
    built.notes.insert(built.notes.begin(), std::move_iterator(notes.begin()), std::move_iterator(notes.end()));
    setResults(std::move(built));
    restorePlotChoices();
    return m_results;
}

void ResultReading::show(RunResults results) {
    keepPlotChoices();
    m_startedSetup = {};
    m_gridChoice = {};
    setResults(std::move(results));
    restorePlotChoices();
}

void ResultReading::setResults(RunResults results) {
    m_replaced();
    m_results = std::move(results);
    reloadSettings();
}

/// By the document's setup, unless the user wants the grid that ran. Returns what the user should know of the two.
std::vector<std::string> ResultReading::layOutGrid() {
    constructIndependentVariables();
    std::optional<SweepGrid> ran = m_startedSetup.grid(*m_source.services.calendar);
    m_gridChoice.difference = ran ? gridDifference(*ran, m_results.grid) : "";
    const std::string text = m_gridChoice.text();
    std::vector<std::string> notes;
    if (std::string note = text.empty() ? m_startedSetup.note(m_source.setup.dictionary()) : text; !note.empty()) {
        notes.push_back(std::move(note));
    }
    if (m_gridChoice.ofStarted && ran) {
        m_results.grid = *std::move(ran);
        reloadSettings();
    }
    return notes;
}

void ResultReading::readTable(const std::function<void(const TableReadOptions&)>& read) const {
    try {
        readWhileWaiting(read);
    } catch (const ResultTableMissing&) {
        m_source.messages.showModal(
            {"File Not Found", fmt::format("The data file, {}, was not found.", tablePath()), {"OK"}});
        throw;
    }
}

/// A table of gigabytes takes seconds: meanwhile the window shows how far the reading is, and the user may cancel it.
void ResultReading::readWhileWaiting(const std::function<void(const TableReadOptions&)>& read) const {
    WaitPanel* panel = m_source.outlets.waitPanel;
    if (panel == nullptr) return read(m_source.services.tableReading);
    const auto size = static_cast<double>(openResultTable(tablePath()).size());
    bool cancelled = false;
    TableReadOptions options = m_source.services.tableReading;
    options.progress = [&](std::uint64_t bytesRead) {
        cancelled = cancelled || !panel->update(static_cast<double>(bytesRead) / size);
        return !cancelled;
    };
    const PanelWait open(*panel, "Reading the results\u2026");
    try {
        read(options);
    } catch (...) {
        if (cancelled) throw ResultsCancelled();
        throw;
    }
}

void ResultReading::chooseOtherGrid(const std::function<bool()>& rebuild) {
    if (m_gridChoice.difference.empty()) return;
    const GridChoice before = m_gridChoice;
    m_gridChoice.ofStarted = !before.ofStarted;
    keepPlotChoices();
    if (!rebuild()) m_gridChoice = before;
}

void ResultReading::keepStarted(const DocumentFile& file) {
    m_startedSetup = file.path() ? StartedSetup(*file.path()) : StartedSetup();
    m_gridChoice = {};
}

void ResultReading::clearSweep() {
    keepPlotChoices();
    setIndependentVariables({});
}

void ResultReading::keepPlotChoices() {
    if (PlotChoices choices{m_results.grid.variables, m_results.responses.variables}; choices.chosen()) {
        m_earlierChoices = std::move(choices);
    }
}

void ResultReading::restorePlotChoices() {
    if (keepChoices(m_earlierChoices, m_results.grid.variables, m_results.responses.variables)) reloadSettings();
}

void ResultReading::constructIndependentVariables() {
    m_results.grid = orrery::constructIndependentVariables(m_source.setup.dictionary(), *m_source.services.calendar);
    reloadSettings();
}

void ResultReading::constructDependentVariables() {
    readTable([this](const TableReadOptions& /*options*/) {
        m_results.responses =
            orrery::constructDependentVariables(m_source.model.tree(), m_results.grid.variables, tablePath());
    });
    reloadSettings();
}

void ResultReading::getSimulationData() {
    setSimulationData({});
    readTable([this](const TableReadOptions& options) {
        m_results.table = readResultTable(tablePath(), m_results.shape(), options);
    });
}

void ResultReading::setIndependentVariables(std::vector<IndependentVariable> variables) {
    m_results.grid.variables = std::move(variables);
    reloadSettings();
}

void ResultReading::setDependentVariables(std::vector<ResponseVariable> variables) {
    m_results.responses.variables = std::move(variables);
    reloadSettings();
}

void ResultReading::setSimulationData(CellBlock data) {
    m_replaced();
    m_results.table.cells = std::move(data);
}

void ResultReading::reloadSettings() const {
    m_source.outlets.independentVariableSettings->reloadData();
    m_source.outlets.dependentVariableSettings->reloadData();
}

} // namespace orrery
