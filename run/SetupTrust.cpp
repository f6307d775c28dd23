#include "run/SetupTrust.h"

#include "document/setup/ModelPath.h"
#include "document/setup/SetupReader.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "run/Export.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

namespace orrery {

namespace {

constexpr const char* trustKey = "trustedSetups";
constexpr std::size_t mostTrusted = 500;

/// Of the content alone: FNV-1a in 64 bits, and the length.
std::string hashOf(std::string_view bytes) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3U;
    }
    return fmt::format("{:016x}-{}", hash, bytes.size());
}

/// The path as the system finds it, with what does not exist yet as it stands.
std::string realPath(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path real = std::filesystem::weakly_canonical(path, failure);
    return failure ? absolutePath(path) : real.string();
}

std::string folderOf(const std::string& path) {
    const std::string real = realPath(path.substr(0, path.rfind('/') + 1));
    return real.ends_with('/') ? real : real + '/';
}

std::optional<SetupDictionary> parsedSetup(const std::string& bytes, const std::string& path) {
    try {
        LoadedSetup loaded = readSetup(bytes, path);
        if (loaded.parsed) return std::move(loaded.dictionary);
    } catch (const OrreryError&) { // no setup that an engine could run
    }
    return std::nullopt;
}

} // namespace

bool SetupTrust::knows(std::string_view setupBytes) const {
    const auto kept = m_defaults == nullptr ? std::nullopt : m_defaults->stringForKey(trustKey);
    return kept && kept->find(hashOf(setupBytes)) != std::string::npos;
}

void SetupTrust::add(std::string_view setupBytes) {
    if (m_defaults == nullptr || knows(setupBytes)) return;
    std::string kept = m_defaults->stringForKey(trustKey).value_or("");
    kept += (kept.empty() ? "" : " ") + hashOf(setupBytes);
    while (static_cast<std::size_t>(std::ranges::count(kept, ' ')) >= mostTrusted) {
        kept.erase(0, kept.find(' ') + 1);
    }
    m_defaults->setObject(kept, trustKey);
}

std::vector<std::string> outputsOutside(const SetupDictionary& setup, const std::string& setupPath) {
    std::vector<std::string> files;
    if (isSingleRun(setup)) return files;
    const std::string folder = folderOf(setupPath);
    for (const Entry& output : setup.entries(setup_key::outputs)) {
        const std::string path = resolvedPath(output.text("outputPath"), setupPath);
        if (!path.empty() && !realPath(path).starts_with(folder)) files.push_back(path);
    }
    return files;
}

bool mayRunSetup(SetupTrust& trust, const std::string& setupPath,
                 const std::function<bool(const std::vector<std::string>& files)>& ask) {
    std::string bytes;
    try {
        bytes = readWholeFile(setupPath);
    } catch (const OrreryError&) {
        return true; // what cannot be read is not run either
    }
    const std::optional<SetupDictionary> setup = parsedSetup(bytes, setupPath);
    if (!setup || trust.knows(bytes)) return true;
    const std::vector<std::string> outside = outputsOutside(*setup, setupPath);
    std::vector<std::string> existing;
    std::ranges::copy_if(outside, std::back_inserter(existing), fileExists);
    if (!existing.empty() && !ask(existing)) return false;
    if (!outside.empty()) trust.add(bytes);
    return true;
}

} // namespace orrery
