#include "document/DocumentFile.h"

#include "document/setup/ModelPath.h"
#include "document/setup/SetupMove.h"
#include "document/setup/SetupReader.h"
#include "document/setup/SetupWriter.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/values/Quoted.h"
#include "run/SetupTrust.h"

#include <fmt/format.h>

#include <utility>

namespace orrery {

std::string DocumentFile::absolutePath() const {
    return m_path ? orrery::absolutePath(*m_path) : "";
}

std::string DocumentFile::modelPath() const {
    const std::string_view path = m_setup.dictionary().textOrEmpty(setup_key::modelPath);
    if (path.empty()) return {};
    return resolvedPath(std::string(path), m_path.value_or(""));
}

void DocumentFile::load(std::string_view bytes) {
    LoadedSetup loaded = readSetup(bytes, pathForMessages());
    m_unparsedFault = loaded.parsed ? "" : loaded.fault;
    m_unparsedBytes = loaded.parsed ? "" : bytes;
    if (!loaded.parsed) logLine(loaded.fault);
    m_isOurs = SetupTrust(m_services.userDefaults).knows(bytes);
    m_setup.setDictionary(std::move(loaded.dictionary));
    m_setup.observeSettings(true);
}

void DocumentFile::read(std::string path) {
    std::string bytes;
    KnownFile file = KnownFile::read(path, bytes);
    const auto before = std::exchange(m_path, std::move(path));
    try {
        load(bytes);
    } catch (...) {
        m_path = before;
        throw;
    }
    m_known = std::move(file);
}

void DocumentFile::readCopyOf(const std::string& path) {
    std::string bytes;
    (void)KnownFile::read(path, bytes);
    readCopy(bytes, path);
}

void DocumentFile::readCopy(std::string_view bytes, const std::string& path) {
    m_path = path; // for messages
    try {
        load(bytes);
    } catch (...) {
        m_path.reset();
        throw;
    }
    m_setup.replaceModelPaths([&](const std::string& model) { return absoluteModelPath(model, path); });
    m_path.reset();
    m_known = {};
    m_unparsedBytes.clear();
    m_isUnsavedCopy = true;
    m_setup.setSaved();
}

KnownFile DocumentFile::write(const SetupDictionary& setup, const std::string& path) {
    if (m_services.userDefaults != nullptr) {
        std::optional<std::string> location;
        if (m_path) location = fileUrl(absolutePath());
        m_services.userDefaults->setObject(location, "lastPath");
    }
    const std::string bytes = setupFileBytes(setup, path);
    keepUnparsed(path);
    KnownFile written = replaceKnownFile(path, bytes);
    if (m_isOurs && !outputsOutside(setup, path).empty()) SetupTrust(m_services.userDefaults).add(bytes);
    m_unparsedBytes.clear();
    m_unparsedFault.clear();
    return written;
}

void DocumentFile::keepUnparsed(const std::string& path) {
    if (m_unparsedBytes.empty() || !fileExists(path) || readWholeFile(path) != m_unparsedBytes) return;
    std::string kept = path + "~";
    for (int number = 2; fileExists(kept); ++number) {
        kept = fmt::format("{}~{}", path, number);
    }
    replaceFile(kept, m_unparsedBytes);
    logLine(fmt::format("{} was not a setup file; its old content is kept as {}", path, kept));
}

void DocumentFile::save(const std::string& path) {
    m_known = write(setupAfterMove(m_setup.dictionary(), m_path, path), path);
    m_setup.replaceModelPaths([&](const std::string& model) { return modelPathAfterMove(model, m_path, path); });
    m_isUnsavedCopy = false;
    m_path = std::string(path); // by value: the argument may be this path
    m_setup.setSaved();
}

/// A setup from elsewhere may name any file of the user's as a result file.
bool DocumentFile::mayRun() {
    if (!m_path) return true;
    SetupTrust trust(m_services.userDefaults);
    if (!mayRunSetup(trust, absolutePath(), [this](const auto& files) { return asksToWriteOver(files); })) return false;
    m_isOurs = true;
    return true;
}

bool DocumentFile::asksToWriteOver(const std::vector<std::string>& files) {
    if (m_services.writesOverOutputs) return true;
    return m_messages.agrees({"This setup overwrites files outside its folder.",
                              fmt::format("It was not saved here, and running it would replace {}. Run it only if you "
                                          "know where it comes from.",
                                          listed(files)),
                              {"Replace and Run", "Cancel"}},
                             "Then give --overwrite-outputs.");
}

} // namespace orrery
