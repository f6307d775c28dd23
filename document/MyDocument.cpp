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

} // namespace

MyDocument::MyDocument(DocumentServices services)
    : m_services(std::move(services)), m_setup([this] { return m_model.importFrom(modelFilePath()); },
                                               [this](const PlotChange& change) { putPlotChange(change); }),
      m_model([this] { m_setup.setupChanged(); }, [this](const AlertText& text) { showSheet(text); }),
      m_run(*this, m_services.run) {
    if (m_services.calendar == nullptr) m_services.calendar = &currentCalendar();
    m_setup.history().setApplies([this](const PlotChange& change) {
        return change.appliesTo(m_results.grid.variables, m_results.responses.variables);
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
    return setupToXml(m_setup.dictionary());
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
    m_setup.observeSettings(true);
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
    m_setup.replaceModelPaths([&](const std::string& model) { return absoluteModelPath(model, path); });
    m_filePath.reset();
    m_knownFile = {};
    m_unparsedBytes.clear();
    m_isUnsavedCopy = true;
    m_setup.setSaved();
}

void MyDocument::writeToURL(const std::string& path, std::string_view /*typeName*/) {
    (void)writeSetup(m_setup.dictionary(), path);
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
    logLine(fmt::format("{} was not a setup file; its old content is kept as {}", path, kept));
}

void MyDocument::saveToFile(const std::string& path) {
    m_knownFile = writeSetup(setupAfterMove(m_setup.dictionary(), m_filePath, path), path);
    m_setup.replaceModelPaths([&](const std::string& model) { return modelPathAfterMove(model, m_filePath, path); });
    m_isUnsavedCopy = false;
    const bool hadFile = std::exchange(m_filePath, std::string(path)).has_value();
    m_setup.setSaved();
    // Only now a relative path names a model.
    const bool findsModel = !hadFile && modelFilePath() != m_setup.dictionary().textOrEmpty(setup_key::modelPath);
    if (findsModel) importModelOrLeaveIt(false);
}

void MyDocument::revertToFile() {
    if (!m_filePath) return;
    const std::string before = modelFilePath();
    readFromFile(*m_filePath);
    updateChangeCount(ChangeKind::Cleared);
    importModelOrLeaveIt(modelFilePath() == before);
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
    m_model.setOutlets(outlets.outlineView, outlets.waitPanel);
    m_run.setOutlets({outlets.statusView, outlets.progressWheel, outlets.startStopButton, outlets.alerts});
    controller(PortList::Outputs).setView(outlets.outputTable);
    controller(PortList::Initializations).setView(outlets.inputTable);
    controller(PortList::Steppers).setView(outlets.stepperTable);
}

void MyDocument::awakeFromNib() {
    if (!modelFilePath().empty()) importModelOrLeaveIt(false);
    if (m_services.run.runLoop != nullptr) {
        m_timer = m_services.run.runLoop->repeat(animationInterval, [this] { animationTimer(); });
        m_timer->setResting(!m_isAnimated);
    }
    resetCamera();
    setLightSliderMax(20);
    setLightSliderMin(-5);
}

/// Where the user cancels the import, the tree of an earlier model goes.
void MyDocument::importModelOrLeaveIt(bool treeIsOfSameModel) {
    if (!m_model.importFrom(modelFilePath())) m_model.leaveUnread(modelFilePath(), treeIsOfSameModel);
}

void MyDocument::close() {
    m_timer.reset();
    m_alive.reset();
}

std::string MyDocument::modelFilePath() const {
    const std::string_view path = m_setup.dictionary().textOrEmpty(setup_key::modelPath);
    if (path.empty()) return {};
    return resolvedModelPath(std::string(path), m_filePath.value_or(""));
}

void MyDocument::selectModel() {
    OpenPanelRequest request;
    request.fileTypes = {"xml", "kestrelxmldoc"};
    m_outlets.openPanel->beginSheet(request, [this, alive = std::weak_ptr<int>(m_alive)](const std::string& path) {
        if (!alive.expired()) m_setup.chooseModel(path);
    });
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
