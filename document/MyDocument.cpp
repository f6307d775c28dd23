#include "document/MyDocument.h"

#include "document/setup/ModelPath.h"
#include "document/setup/SetupForm.h"
#include "document/setup/SetupMove.h"
#include "document/setup/SetupReader.h"
#include "document/setup/SetupWriter.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/OrreryError.h"
#include "platform/Workers.h"
#include "run/ResponseVariables.h"
#include "run/SetupTrust.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <utility>

namespace orrery {

namespace {

// The interval is kept as a single-precision number of seconds, 0.01666666753590107.
constexpr auto animationInterval =
    std::chrono::nanoseconds(static_cast<std::int64_t>(static_cast<double>(1.0F / 60.0F) * 1e9));

/// A model that stays broken is read again at every activation: its sheet is one and shows the latest.
AlertText modelSheet(std::string message, std::string informative, Severity severity = Severity::Warning) {
    return {std::move(message), std::move(informative), {"OK"}, severity, {}, "model"};
}

} // namespace

MyDocument::MyDocument(DocumentServices services) : m_services(std::move(services)), m_run(*this, m_services.run) {
    if (m_services.calendar == nullptr) m_services.calendar = &currentCalendar();
    m_undo.setApplies([this](const PlotChange& change) {
        return change.appliesTo(m_results.grid.variables, m_results.responses.variables);
    });
    for (const PortList list : {PortList::Outputs, PortList::Initializations, PortList::Steppers}) {
        m_controllers.emplace_back(list, [this]() -> SetupDictionary& { return m_dictionary; });
    }
}

MyDocument::~MyDocument() {
    close();
}

void MyDocument::initWithType(std::string_view /*typeName*/) {
    if (!m_hasDictionary) setTheDictionary(defaultSetup());
    observeSettings(false);
}

void MyDocument::setTheDictionary(SetupDictionary dictionary) {
    m_dictionary = std::move(dictionary);
    m_hasDictionary = true;
    m_savedValues = m_dictionary.values();
    m_undo.clear();
    for (ListController& controller : m_controllers) {
        controller.rearrangeObjects();
    }
    setupChanged();
}

void MyDocument::observeSettings(bool opened) {
    for (const setup_form::Setting& setting : setup_form::settings) {
        using setup_form::Counted;
        if (setting.counted == Counted::Nowhere || (setting.counted == Counted::InOpenedOnes && !opened)) continue;
        m_dictionary.addObserver(setting.key, [this](std::string_view changed) { observeValueForKeyPath(changed); });
    }
}

void MyDocument::observeValueForKeyPath(std::string_view /*key*/) {
    updateChangeCount(ChangeKind::Done);
}

void MyDocument::updateChangeCount(ChangeKind kind) {
    switch (kind) {
    case ChangeKind::Done:
        ++m_changeCount;
        break;
    case ChangeKind::Undone:
        --m_changeCount;
        break;
    case ChangeKind::Cleared:
        m_changeCount = 0;
        break;
    }
    if (m_changeObserver) m_changeObserver();
}

XmlDocument MyDocument::convertToXML() const {
    return setupToXml(m_dictionary);
}

void MyDocument::convertFromXML(const XmlDocument& document) {
    setTheDictionary(setupFromXml(document, m_filePath.value_or("setup")));
}

bool MyDocument::loadDataRepresentation(std::string_view bytes, std::string_view /*typeName*/) {
    LoadedSetup loaded = readSetup(bytes, m_filePath.value_or("setup"));
    m_unparsedFault = loaded.parsed ? "" : loaded.fault;
    m_unparsedBytes = loaded.parsed ? "" : bytes;
    if (!loaded.parsed) logLine(loaded.fault);
    m_isOurs = SetupTrust(m_services.userDefaults).knows(bytes);
    setTheDictionary(std::move(loaded.dictionary));
    observeSettings(true);
    return true;
}

void MyDocument::readFromFile(std::string path) {
    std::string bytes;
    KnownFile file = KnownFile::read(path, bytes);
    const auto before = std::exchange(m_filePath, std::move(path));
    try {
        loadDataRepresentation(bytes, "");
    } catch (...) {
        m_filePath = before;
        throw;
    }
    m_knownFile = std::move(file);
}

void MyDocument::readCopyOf(const std::string& path) {
    readFromFile(path);
    replaceModelPaths([&](const std::string& model) { return absoluteModelPath(model, path); });
    m_filePath.reset();
    m_knownFile = {};
    m_unparsedBytes.clear();
    m_isUnsavedCopy = true;
    m_savedValues = m_dictionary.values();
    updateChangeCount(ChangeKind::Cleared);
}

void MyDocument::writeToURL(const std::string& path, std::string_view /*typeName*/) {
    (void)writeSetup(m_dictionary, path);
}

KnownFile MyDocument::writeSetup(const SetupDictionary& setup, const std::string& path) {
    if (m_services.userDefaults != nullptr) {
        std::optional<std::string> location;
        if (m_filePath) location = fileUrl(absolutePath(*m_filePath));
        m_services.userDefaults->setObject(location, "lastPath");
    }
    const std::string bytes = setupFileBytes(setup, path);
    keepUnparsedFile(path);
    KnownFile written = replaceKnownFile(path, bytes);
    if (m_isOurs && !outputsOutside(setup, path).empty()) SetupTrust(m_services.userDefaults).add(bytes);
    m_unparsedBytes.clear();
    m_unparsedFault.clear();
    return written;
}

void MyDocument::keepUnparsedFile(const std::string& path) {
    if (m_unparsedBytes.empty() || !fileExists(path) || readWholeFile(path) != m_unparsedBytes) return;
    std::string kept = path + "~";
    for (int number = 2; fileExists(kept); ++number) {
        kept = fmt::format("{}~{}", path, number);
    }
    replaceFile(kept, m_unparsedBytes);
    logLine(fmt::format("{} was no setup file; its old content is kept as {}", path, kept));
}

void MyDocument::saveToFile(const std::string& path) {
    m_knownFile = writeSetup(setupAfterMove(m_dictionary, m_filePath, path), path);
    replaceModelPaths([&](const std::string& model) { return modelPathAfterMove(model, m_filePath, path); });
    m_isUnsavedCopy = false;
    const bool hadFile = std::exchange(m_filePath, std::string(path)).has_value();
    m_savedValues = m_dictionary.values();
    updateChangeCount(ChangeKind::Cleared);
    // Only now a relative path names a model.
    const bool findsModel = !hadFile && modelFilePath() != m_dictionary.textOrEmpty(setup_key::modelPath);
    if (findsModel && !importModelOfSetup()) leaveModelUnread(false);
}

/// In the setup as well as in what can be undone and done again.
void MyDocument::replaceModelPaths(const std::function<std::string(const std::string&)>& replacement) {
    m_undo.replaceTexts(setup_key::modelPath, replacement);
    const std::string* present = m_dictionary.text(setup_key::modelPath);
    if (present == nullptr) return;
    std::string replaced = replacement(*present);
    if (replaced == *present) return;
    m_dictionary.setText(setup_key::modelPath, std::move(replaced));
    setupChanged();
}

void MyDocument::revertToFile() {
    if (!m_filePath) return;
    const std::string before = modelFilePath();
    readFromFile(*m_filePath);
    updateChangeCount(ChangeKind::Cleared);
    if (!importModelOfSetup()) leaveModelUnread(modelFilePath() == before);
}

void MyDocument::saveDocument(std::function<void(bool)> didSave) {
    if (m_saveHandler) {
        m_saveHandler(std::move(didSave));
        return;
    }
    bool saved = false;
    try {
        if (!m_filePath) throw OrreryError("The document has no file yet.", {}, "Save it under a name first.");
        saveToFile(*m_filePath);
        saved = true;
    } catch (const std::exception& error) {
        showSheet({"The document could not be saved.", error.what()});
    }
    didSave(saved);
}

void MyDocument::setOutlets(const DocumentOutlets& outlets) {
    m_outlets = outlets;
    m_run.setOutlets({outlets.statusView, outlets.progressWheel, outlets.startStopButton, outlets.alerts});
    controller(PortList::Outputs).setView(outlets.outputTable);
    controller(PortList::Initializations).setView(outlets.inputTable);
    controller(PortList::Steppers).setView(outlets.stepperTable);
}

void MyDocument::awakeFromNib() {
    if (!modelFilePath().empty() && !importModelOfSetup()) leaveModelUnread(false);
    if (m_services.run.runLoop != nullptr) {
        m_timer = m_services.run.runLoop->repeat(animationInterval, [this] { animationTimer(); });
        m_timer->setResting(!m_isAnimated);
    }
    resetCamera();
    setLightSliderMax(20);
    setLightSliderMin(-5);
}

/// False when the user has cancelled it, which then changes nothing.
bool MyDocument::importModelOfSetup() {
    const std::string path = modelFilePath();
    try {
        makeModelTree(path); // an empty path gives an empty tree
        setModelModification(path.empty() ? std::nullopt : modificationDate(path));
    } catch (const ReadingCancelled&) {
        showSheet(modelSheet("The model was not imported.",
                             "The import was cancelled. To import it later, choose it again with "
                             "Setup > Choose Model\u2026",
                             Severity::Information));
        return false;
    } catch (const std::exception& failure) {
        reportImportFailure(failure);
    }
    return true;
}

/// The user does not want the present model file read: coming back to the application is no reason to try again.
void MyDocument::leaveModelUnread(bool treeIsOfPresentModel) {
    setModelModification(modificationDate(modelFilePath()));
    if (treeIsOfPresentModel) return;
    setModelTree({});
    if (m_outlets.outlineView != nullptr) m_outlets.outlineView->reloadData();
    setupChanged();
}

void MyDocument::close() {
    m_timer.reset();
    m_alive.reset();
}

std::string MyDocument::modelFilePath() const {
    const std::string_view path = m_dictionary.textOrEmpty(setup_key::modelPath);
    if (path.empty()) return {};
    return resolvedModelPath(std::string(path), m_filePath.value_or(""));
}

void MyDocument::makeModelTree(const std::string& path) {
    ImportedModel imported;
    std::size_t recorders = 0;
    {
        std::optional<PanelWait> open;
        if (m_outlets.waitPanel != nullptr) open.emplace(*m_outlets.waitPanel, "Reading the model\u2026");
        whileWaiting([&](const ReadProgress& progress) {
            imported = importModel(path, progress);
            recorders = recorderCount(imported.tree);
        });
        installTree(std::move(imported.tree), recorders);
    }
    if (!imported.fault.empty()) showSheet(modelSheet("The model could not be read.", imported.fault));
}

/// On another thread where there is a panel to wait with.
void MyDocument::whileWaiting(const std::function<void(const ReadProgress&)>& work) {
    WaitPanel* panel = m_outlets.waitPanel;
    if (panel == nullptr) {
        work({});
        return;
    }
    std::atomic<double> done = 0;
    std::atomic<bool> cancelled = !panel->update(0);
    const auto progress = [&](double fractionDone) {
        done = fractionDone;
        return !cancelled;
    };
    runBeside([&] { work(progress); },
              [&] {
                  if (!panel->update(done)) cancelled = true;
              });
}

/// Within a wait. To free the old tree takes long, too, when it is large.
void MyDocument::installTree(ModelTree tree, std::size_t recorders) {
    std::swap(m_modelTree, tree);
    m_portFaults.forget();
    m_recorderCount = recorders;
    if (m_outlets.outlineView != nullptr) m_outlets.outlineView->reloadData();
    setupChanged();
    if (!tree.empty()) whileWaiting([&tree](const ReadProgress&) { tree = {}; });
}

void MyDocument::setModelTree(ModelTree tree) {
    m_modelTree = std::move(tree);
    m_portFaults.forget();
    m_recorderCount = recorderCount(m_modelTree);
}

void MyDocument::updateModelTree() {
    const std::string path = modelFilePath();
    if (path.empty()) return;
    const std::optional<Date> date = modificationDate(path);
    if (!date || date == m_modelModification) return;
    makeModelTree(path);
    setModelModification(date);
}

void MyDocument::refreshModel() {
    try {
        updateModelTree();
    } catch (const ReadingCancelled&) {
        leaveModelUnread(true);
        showSheet(modelSheet("The model has changed, but was not imported again.",
                             "The import was cancelled. The window shows the model as it was before.",
                             Severity::Information));
    } catch (const std::exception& failure) {
        reportImportFailure(failure);
    }
}

void MyDocument::selectModel() {
    if (m_outlets.openPanel == nullptr) return;
    OpenPanelRequest request;
    request.fileTypes = {"xml", "kestrelxmldoc"};
    m_outlets.openPanel->beginSheet(request, [this, alive = std::weak_ptr<int>(m_alive)](const std::string& path) {
        if (!alive.expired()) useModel(path);
    });
}

void MyDocument::useModel(const std::string& path) {
    const bool isOther = m_dictionary.textOrEmpty(setup_key::modelPath) != path;
    edit("Choose Model", [&] { m_dictionary.setText(setup_key::modelPath, path); });
    if (!importModelOfSetup() && isOther) stepBack();
}

void MyDocument::reportImportFailure(const std::exception& failure) {
    logLine(failure.what());
    showSheet(modelSheet("The model could not be imported.", failure.what()));
}

void MyDocument::showSheet(const AlertText& text) {
    if (m_outlets.alerts != nullptr) {
        m_outlets.alerts->beginSheet(text, [](std::size_t) {});
    } else if (m_services.run.message) {
        m_services.run.message(fmt::format("{} {}", text.message, text.informative));
    }
}

void applicationDidBecomeActive(const std::vector<MyDocument*>& documents) {
    for (MyDocument* document : documents) {
        document->refreshModel();
    }
}

} // namespace orrery
