#include "document/MyDocument.h"

#include "document/PortDrags.h"
#include "document/setup/ModelPath.h"
#include "document/setup/SetupReader.h"
#include "document/setup/SetupWriter.h"
#include "platform/Files.h"
#include "platform/Workers.h"
#include "platform/values/OrreryError.h"
#include "run/Export.h"
#include "run/IndexSet.h"
#include "run/SetupProblems.h"
#include "run/SweepSummary.h"

#include <exception>
#include <utility>

namespace orrery {

MyDocument::MyDocument(DocumentServices services)
    : m_services(std::move(services)), m_setup([this] { return m_model.importFrom(m_file.modelPath()); },
                                               [this](const PlotChange& change) { m_plot.put(change); }),
      m_model([this] { m_setup.setupChanged(); }, [this](const AlertText& text) { m_messages.showSheet(text); }),
      m_reading({m_setup, m_model, m_keeping, m_outlets, m_services, m_messages}, [this] { m_plot.forget(); }),
      m_handover(m_services, m_messages,
                 [this] { return exportPaths(theDictionary(), m_reading.tablePath(), m_file.absolutePath()); }),
      m_run(*this, m_services.run) {
    if (m_services.calendar == nullptr) m_services.calendar = &currentCalendar();
    m_setup.history().setApplies([this](const PlotChange& change) {
        return change.appliesTo(results().grid.variables, results().responses.variables);
    });
}

MyDocument::~MyDocument() {
    close();
}

void MyDocument::initWithType(std::string_view /*typeName*/) {
    if (!m_setup.hasDictionary()) setTheDictionary(defaultSetup());
    m_setup.observeSettings(false);
}

XmlDocument MyDocument::convertToXML() const {
    return setupToXml(theDictionary());
}

void MyDocument::convertFromXML(const XmlDocument& document) {
    setTheDictionary(setupFromXml(document, m_file.pathForMessages()));
}

bool MyDocument::loadDataRepresentation(std::string_view bytes, std::string_view /*typeName*/) {
    m_file.load(bytes);
    return true;
}

void MyDocument::saveToFile(const std::string& path) {
    const bool hadFile = m_file.path().has_value();
    m_file.save(path);
    // Only now a relative path names a model.
    const bool findsModel = !hadFile && m_file.modelPath() != theDictionary().textOrEmpty(setup_key::modelPath);
    if (findsModel) importModelOrLeaveIt(false);
}

void MyDocument::revertToFile() {
    if (!m_file.path()) return;
    const std::string before = m_file.modelPath();
    readFromFile(*m_file.path());
    updateChangeCount(ChangeKind::Cleared);
    importModelOrLeaveIt(m_file.modelPath() == before);
}

void MyDocument::saveDocument(std::function<void(bool)> didSave) {
    if (m_saveHandler) {
        m_saveHandler(std::move(didSave));
        return;
    }
    bool saved = false;
    try {
        if (!m_file.path()) throw OrreryError("The document has no file yet.", {}, "Save it under a name first.");
        saveToFile(*m_file.path());
        saved = true;
    } catch (const std::exception& error) {
        m_messages.showSheet({"The document could not be saved.", error.what()});
    }
    didSave(saved);
}

void MyDocument::setOutlets(const DocumentOutlets& outlets) {
    m_outlets = outlets;
    m_model.setOutlets(outlets.outlineView, outlets.waitPanel);
    m_run.setOutlets({outlets.statusView, outlets.progressWheel, outlets.startStopButton, outlets.alerts});
    controller(PortList::Outputs).setView(outlets.outputTable);
    controller(PortList::Initializations).setView(outlets.inputTable);
    controller(PortList::Steppers).setView(outlets.stepperTable);
}

void MyDocument::awakeFromNib() {
    const std::string modelPath = m_file.modelPath();
    if (m_keeping.path().empty()) {
        if (!modelPath.empty()) importModelOrLeaveIt(false);
    } else { // a kept run is shown, whether its model is still there or not
        if (fileExists(modelPath)) importModelOrLeaveIt(false);
        m_outlets.statusView->setString(m_keeping.record().engineText);
    }
    if (m_services.run.runLoop != nullptr) m_camera.startTimer(*m_services.run.runLoop);
    resetCamera();
    setLightSliderMax(20);
    setLightSliderMin(-5);
}

/// Where the user cancels the import, the tree of an earlier model goes.
void MyDocument::importModelOrLeaveIt(bool treeIsOfSameModel) {
    const std::string path = m_file.modelPath();
    if (!m_model.importFrom(path)) m_model.leaveUnread(path, treeIsOfSameModel);
}

void MyDocument::close() {
    m_camera.stopTimer();
    m_handover.close();
    m_alive.reset();
}

bool MyDocument::validateTag(CommandTag tag) {
    const bool hasPlace = m_run.fault().empty(); // else neither a run nor its results have one
    bool enabled = false;
    if (tag == CommandTag::Run) {
        enabled = hasPlace && theDictionary().contains(setup_key::modelPath);
    } else if (tag == CommandTag::Send) {
        enabled = hasPlace && exportFilesExist(theDictionary(), m_reading.tablePath(), m_file.absolutePath());
    }
    m_outlets.startStopButton->setEnabled(enabled);
    return enabled;
}

bool MyDocument::validateMenuItem(std::int32_t tag) {
    const auto command = static_cast<CommandTag>(tag);
    return (command != CommandTag::Run && command != CommandTag::Send) || validateTag(command);
}

void MyDocument::tabViewDidSelectTabViewItem(std::string_view identifier) {
    if (identifier == "2") m_plot.redraw();
}

void MyDocument::selectModel() {
    OpenPanelRequest request;
    request.fileTypes = {"xml", "kestrelxmldoc"};
    m_outlets.openPanel->beginSheet(request, [this, alive = std::weak_ptr<int>(m_alive)](const std::string& path) {
        if (!alive.expired()) m_setup.chooseModel(path);
    });
}

bool MyDocument::outlineViewWriteItems(const std::vector<const ModelNode*>& items, Pasteboard& pasteboard) const {
    return writePort(items, pasteboard);
}

bool MyDocument::tableViewWriteRows(PortList table, const std::vector<std::size_t>& rows,
                                    Pasteboard& pasteboard) const {
    writeRows(table, rows, pasteboard);
    return true;
}

DropDecision MyDocument::tableViewValidateDrop(PortList table, const Pasteboard& pasteboard) {
    return validateDrop(table, pasteboard.types());
}

bool MyDocument::tableViewAcceptDrop(PortList table, const Pasteboard& pasteboard, std::size_t row,
                                     DropOperation operation) {
    return acceptDrop(m_setup, table, pasteboard, row, operation);
}

std::string MyDocument::sweepSummary() const {
    return orrery::sweepSummary(theDictionary(), *m_services.calendar, m_model.recorders());
}

SetupProblems MyDocument::setupProblems() {
    return orrery::setupProblems(theDictionary(), {.ports = m_model.portFaults(),
                                                   .responses = m_model.recorders(),
                                                   .calendar = *m_services.calendar,
                                                   .setupPath = m_file.absolutePath(),
                                                   .fileExists = fileExists,
                                                   .availableMemory = availableMemory});
}

void MyDocument::clearSweepForRun() {
    m_reading.clearSweep();
    m_plot.redraw();
}

void MyDocument::keepStartedSetup() {
    m_reading.keepStarted(m_file);
    m_keeping.begin(theDictionary(), m_file);
}

const RunResults& MyDocument::buildResults() {
    m_keeping.end(m_run.outcome());
    const RunResults& built = m_reading.build();
    m_plot.markOutdated();
    m_keeping.keep(built);
    return built;
}

void MyDocument::openResults(const std::string& path) {
    m_run.requireIdle();
    showRun(path, openResultsFile(path));
}

void MyDocument::openRun(const std::string& resultsPath) {
    KeptRun kept = openResultsFile(resultsPath);
    readSetupOf(kept);
    showRun(resultsPath, std::move(kept));
}

void MyDocument::readSetupOf(const KeptRun& kept) {
    const RecordedFile& setup = kept.record.setup;
    if (setup.bytes) {
        m_file.readCopy(*setup.bytes, setup.path);
    } else {
        initWithType("");
    }
}

void MyDocument::showRun(const std::string& path, KeptRun kept) {
    m_outlets.statusView->setString(kept.record.engineText);
    m_keeping.take(path, std::move(kept.record));
    m_reading.show(std::move(kept.results));
    m_run.showKept(results(), m_keeping.record().started);
    m_plot.markOutdated();
}

bool MyDocument::hasResultsToKeep() const {
    return m_run.state() == RunControl::State::Idle && !results().responses.variables.empty() && nRowsOfData() > 0;
}

void MyDocument::lookForLastRun() {
    const auto path = m_file.path();
    const bool isWanted = path && m_run.state() == RunControl::State::Idle && results().grid.variables.empty();
    m_keeping.lookForLastRun(isWanted ? m_file.absolutePath() : "");
}

void MyDocument::runStateChanged() {
    if (m_run.outcome().kind == RunOutcome::Kind::Aborted) m_plot.clear();
    if (m_runObserver) m_runObserver();
    m_setup.historyChanged(); // other results, other choices to take back
}

void MyDocument::readByOtherGrid() {
    m_reading.chooseOtherGrid([this] { return m_run.rebuildResults(); });
}

std::vector<std::uint32_t> MyDocument::makeCurrentIndexSet() const {
    return currentIndexSet(results().grid.variables);
}

std::vector<std::string> MyDocument::usedFiles() const {
    std::vector<std::string> files{m_file.modelPath(), m_reading.tablePath()};
    if (isSingleRun(theDictionary())) return files;
    const std::string setupPath = m_file.absolutePath();
    for (const Entry& output : theDictionary().entries(setup_key::outputs)) {
        files.push_back(resolvedPath(output.text("outputPath"), setupPath));
    }
    return files;
}

void applicationDidBecomeActive(const std::vector<MyDocument*>& documents) {
    for (MyDocument* document : documents) {
        document->refreshModel();
    }
}

} // namespace orrery
