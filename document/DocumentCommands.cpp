// The document's port lists, results and commands.
#include "document/MyDocument.h"
#include "document/setup/ModelPath.h"
#include "model/PortPaths.h"
#include "platform/Files.h"
#include "platform/OrreryError.h"
#include "run/Export.h"
#include "run/IndexSet.h"
#include "run/ResponseVariables.h"
#include "run/SetupProblems.h"
#include "run/SetupTrust.h"
#include "run/SweepSummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

namespace orrery {

bool MyDocument::validateTag(CommandTag tag) {
    bool enabled = false;
    if (!m_services.run.temporaryDirectoryFault.empty()) {
        enabled = false; // neither a run nor its results have a place
    } else if (tag == CommandTag::Run) {
        enabled = m_setup.dictionary().contains(setup_key::modelPath);
    } else if (tag == CommandTag::Send) {
        enabled = exportFilesExist(m_setup.dictionary(), resultTablePath(), absoluteSetupPath());
    }
    m_outlets.startStopButton->setEnabled(enabled);
    return enabled;
}

bool MyDocument::validateMenuItem(std::int32_t tag) {
    const auto command = static_cast<CommandTag>(tag);
    return (command != CommandTag::Run && command != CommandTag::Send) || validateTag(command);
}

bool MyDocument::outlineViewWriteItems(const std::vector<const ModelNode*>& items, Pasteboard& pasteboard) const {
    if (items.empty()) return false;
    const std::optional<PortReference> port = portReference(*items.front());
    if (!port) return false;
    const std::string type(port->direction == PortDirection::Input ? inputPathPboardType : outputPathPboardType);
    pasteboard.declareTypes({type});
    pasteboard.setData(archivePortPath(port->path), type);
    return true;
}

bool MyDocument::tableViewWriteRows(PortList table, const std::vector<std::size_t>& rows,
                                    Pasteboard& pasteboard) const {
    const std::string type(rowPboardType(table));
    pasteboard.declareTypes({type});
    pasteboard.setData(archiveRows(rows), type);
    return true;
}

DropDecision MyDocument::tableViewValidateDrop(PortList table, const Pasteboard& pasteboard) {
    return validateDrop(table, pasteboard.types());
}

bool MyDocument::tableViewAcceptDrop(PortList table, const Pasteboard& pasteboard, std::size_t row,
                                     DropOperation operation) {
    const std::vector<std::string> types = pasteboard.types();
    const auto holds = [&types](std::string_view type) { return std::ranges::find(types, type) != types.end(); };
    if (holds(inputPathPboardType) || holds(outputPathPboardType)) {
        if (!holds(portPboardType(table))) return false;
        const auto path = unarchivePortPath(pasteboard.dataForType(std::string(portPboardType(table))));
        if (!path) return false;
        m_setup.drop(table, *path, row, operation);
    } else {
        if (!holds(rowPboardType(table))) return false;
        const auto rows = unarchiveRows(pasteboard.dataForType(std::string(rowPboardType(table))));
        if (!rows) return false;
        m_setup.moveRowsTo(table, *rows, row);
    }
    return true;
}

/// A setup from elsewhere may name any file of the user's as a result file.
bool MyDocument::mayRun() {
    if (!m_filePath) return true;
    SetupTrust trust(m_services.userDefaults);
    const std::string path = absoluteSetupPath();
    if (!mayRunSetup(trust, path, [this](const auto& files) { return asksToWriteOver(files); })) return false;
    m_isOurs = true;
    return true;
}

bool MyDocument::asksToWriteOver(const std::vector<std::string>& files) {
    const AlertText question{"This setup overwrites files outside its folder.",
                             fmt::format("It was not saved here, and running it would replace {}. Run it only if you "
                                         "know where it comes from.",
                                         listedForMessage(files)),
                             {"Replace and Run", "Cancel"}};
    if (m_services.writesOverOutputs) return true;
    if (m_outlets.alerts != nullptr) return m_outlets.alerts->runModal(question) == 0;
    showSheet({question.message, question.informative + " Then give --overwrite-outputs."});
    return false;
}

void MyDocument::keepStartedSetup() {
    m_startedSetup = m_filePath ? StartedSetup(*m_filePath) : StartedSetup();
    m_gridChoice = {};
}

void MyDocument::keepPlotChoices() {
    if (PlotChoices choices{m_results.grid.variables, m_results.responses.variables}; choices.chosen()) {
        m_earlierChoices = std::move(choices);
    }
}

void MyDocument::clearSweepForRun() {
    keepPlotChoices();
    setIndependentVariables({});
    redrawPlot();
}

void MyDocument::runStateChanged() {
    if (m_run.outcome().kind == RunOutcome::Kind::Aborted) clearPlot();
    if (m_runObserver) m_runObserver();
    m_setup.historyChanged(); // other results, other choices to take back
}

std::string MyDocument::resultTablePath() const {
    return orrery::resultTablePath(m_services.run.temporaryDirectory);
}

const RunResults& MyDocument::buildResults() {
    setResults({}); // what an earlier run left does not fit the new grid
    std::vector<std::string> notes = layOutGrid();
    RunResults built;
    readTable([&](const TableReadOptions& options) {
        built = readRunResults(m_results.grid, m_model.tree(), resultTablePath(), options);
    });
    built.notes.insert(built.notes.begin(), std::move_iterator(notes.begin()), std::move_iterator(notes.end()));
    setResults(std::move(built));
    restorePlotChoices();
    return m_results;
}

void MyDocument::setResults(RunResults results) {
    m_plot.forget();
    m_results = std::move(results);
    reloadSettings();
}

/// By the document's setup, unless the user wants the grid that ran. Returns what the user should know of the two.
std::vector<std::string> MyDocument::layOutGrid() {
    constructIndependentVariables();
    std::optional<SweepGrid> ran = m_startedSetup.grid(*m_services.calendar);
    m_gridChoice.difference = ran ? gridDifference(*ran, m_results.grid) : "";
    const std::string text = m_gridChoice.text();
    std::vector<std::string> notes;
    if (std::string note = text.empty() ? m_startedSetup.note(m_setup.dictionary()) : text; !note.empty()) {
        notes.push_back(std::move(note));
    }
    if (m_gridChoice.ofStarted && ran) {
        m_results.grid = *std::move(ran);
        reloadSettings();
    }
    return notes;
}

void MyDocument::readTable(const std::function<void(const TableReadOptions&)>& read) {
    try {
        readWhileWaiting(read);
    } catch (const ResultTableMissing&) {
        const std::string words = fmt::format("The data file, {}, was not found.", resultTablePath());
        if (m_outlets.alerts != nullptr) {
            (void)m_outlets.alerts->runModal({"File Not Found", words, {"OK"}});
        } else if (m_services.run.message) {
            m_services.run.message("File Not Found: " + words);
        }
        throw;
    }
}

/// A table of gigabytes takes seconds: meanwhile the window shows how far the reading is, and the user may cancel it.
void MyDocument::readWhileWaiting(const std::function<void(const TableReadOptions&)>& read) {
    WaitPanel* panel = m_outlets.waitPanel;
    if (panel == nullptr) return read(m_services.tableReading);
    const auto size = static_cast<double>(openResultTable(resultTablePath()).size());
    bool cancelled = false;
    TableReadOptions options = m_services.tableReading;
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

void MyDocument::constructIndependentVariables() {
    m_results.grid = orrery::constructIndependentVariables(m_setup.dictionary(), *m_services.calendar);
    reloadSettings();
}

void MyDocument::constructDependentVariables() {
    readTable([this](const TableReadOptions& /*options*/) {
        m_results.responses =
            orrery::constructDependentVariables(m_model.tree(), independentVariables(), resultTablePath());
    });
    reloadSettings();
}

void MyDocument::getSimulationData() {
    setSimulationData({});
    readTable([this](const TableReadOptions& options) {
        m_results.table = readResultTable(resultTablePath(), m_results.shape(), options);
    });
}

void MyDocument::setIndependentVariables(std::vector<IndependentVariable> variables) {
    m_results.grid.variables = std::move(variables);
    reloadSettings();
}

void MyDocument::setDependentVariables(std::vector<ResponseVariable> variables) {
    m_results.responses.variables = std::move(variables);
    reloadSettings();
}

void MyDocument::reloadSettings() {
    m_outlets.independentVariableSettings->reloadData();
    m_outlets.dependentVariableSettings->reloadData();
}

void MyDocument::readByOtherGrid() {
    if (m_gridChoice.difference.empty()) return;
    const GridChoice before = m_gridChoice;
    m_gridChoice.ofStarted = !before.ofStarted;
    keepPlotChoices();
    if (!m_run.rebuildResults()) m_gridChoice = before;
}

void MyDocument::restorePlotChoices() {
    m_plotIsOutdated = true;
    if (keepChoices(m_earlierChoices, m_results.grid.variables, m_results.responses.variables)) reloadSettings();
}

std::string MyDocument::sweepSummary() const {
    return orrery::sweepSummary(m_setup.dictionary(), *m_services.calendar, m_model.recorders());
}

SetupProblems MyDocument::setupProblems() {
    return orrery::setupProblems(m_setup.dictionary(), {.ports = m_model.portFaults(),
                                                        .responses = m_model.recorders(),
                                                        .calendar = *m_services.calendar,
                                                        .setupPath = absoluteSetupPath(),
                                                        .fileExists = fileExists,
                                                        .availableMemory = availableMemory});
}

std::vector<std::uint32_t> MyDocument::makeCurrentIndexSet() const {
    return currentIndexSet(m_results.grid.variables);
}

std::string MyDocument::absoluteSetupPath() const {
    return m_filePath ? absolutePath(*m_filePath) : "";
}

std::vector<std::string> MyDocument::usedFiles() const {
    std::vector<std::string> files{modelFilePath(), resultTablePath()};
    if (isSingleRun(m_setup.dictionary())) return files;
    const std::string setupPath = absoluteSetupPath();
    for (const Entry& output : m_setup.dictionary().entries(setup_key::outputs)) {
        files.push_back(resolvedModelPath(output.text("outputPath"), setupPath));
    }
    return files;
}

void MyDocument::saveToDorado() {
    if (m_services.namedServices == nullptr) return sendTo(nullptr);
    if (std::exchange(m_looksForCompanion, true)) return;
    m_services.namedServices->findRootProxy(
        std::string(companionServiceName),
        [this, alive = std::weak_ptr<int>(m_alive)](const std::shared_ptr<RemoteObject>& companion) {
            if (alive.expired()) return;
            m_looksForCompanion = false;
            sendTo(companion.get());
        });
}

void MyDocument::sendTo(RemoteObject* companion) {
    if (companion == nullptr) {
        showSheet(
            {"Could not open communication with Dorado.", "Please start Dorado if it is not already running.", {"OK"}});
        return;
    }
    try {
        companion->importWaves(exportPaths(m_setup.dictionary(), resultTablePath(), absoluteSetupPath()),
                               [this, alive = std::weak_ptr<int>(m_alive)](std::string_view failure) {
                                   if (alive.expired() || failure.empty()) return;
                                   showSheet({"Dorado did not accept the files.", std::string(failure)});
                               });
    } catch (const OrreryError& error) {
        showSheet({"The results cannot be sent to Dorado.", error.what()});
    }
}

} // namespace orrery
