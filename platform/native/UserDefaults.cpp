#include "platform/UserDefaults.h"

#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/values/OrreryError.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace orrery {
namespace {

constexpr std::uint64_t largestFile = 1U << 20U;

using Values = std::map<std::string, std::string>;

/// The file's values; std::nullopt when it is there but is not an object of texts.
std::optional<Values> readValues(const std::string& path) {
    if (!fileExists(path)) return Values();
    try {
        return nlohmann::json::parse(readWholeFile(path, largestFile)).get<Values>();
    } catch (const nlohmann::json::exception&) {
        logLine("The user defaults " + path +
                " are damaged. They are kept under that name with \"~\" when new ones are "
                "stored.");
    } catch (const OrreryError& error) {
        logLine(error.what());
    }
    return std::nullopt;
}

void writeValues(const std::string& path, const Values& values) {
    std::error_code ignored; // what is missing afterwards fails the writing, which says so
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    const auto replaceMalformed = nlohmann::json::error_handler_t::replace;
    replaceFile(path, nlohmann::json(values).dump(2, ' ', false, replaceMalformed) + '\n');
}

void change(Values& values, const std::optional<std::string>& value, const std::string& key) {
    if (value) {
        values[key] = *value;
    } else {
        values.erase(key);
    }
}

std::optional<std::string> valueOf(const Values& values, const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

void MemoryUserDefaults::setObject(const std::optional<std::string>& value, const std::string& key) {
    change(m_values, value, key);
}

std::optional<std::string> MemoryUserDefaults::stringForKey(const std::string& key) const {
    return valueOf(m_values, key);
}

void FileUserDefaults::setObject(const std::optional<std::string>& value, const std::string& key) {
    change(values(), value, key);
    try {
        if (m_damaged && std::rename(m_path.c_str(), (m_path + "~").c_str()) != 0) {
            logLine("The damaged user defaults " + m_path + " cannot be kept, so no new ones are stored.");
            return;
        }
        m_damaged = false;
        writeValues(m_path, *m_values);
    } catch (const OrreryError& error) {
        logLine(error.what());
    }
}

std::optional<std::string> FileUserDefaults::stringForKey(const std::string& key) const {
    return valueOf(values(), key);
}

std::map<std::string, std::string>& FileUserDefaults::values() const {
    if (!m_values) {
        std::optional<Values> read = readValues(m_path);
        m_damaged = !read;
        m_values = read ? std::move(*read) : Values();
    }
    return *m_values;
}

std::string FileUserDefaults::standardPath() {
    const char* const configuration = std::getenv("XDG_CONFIG_HOME");
    if (configuration != nullptr && *configuration == '/') return std::string(configuration) + "/orrery/defaults.json";
    const char* const home = std::getenv("HOME");
    return std::string(home == nullptr ? "." : home) + "/.config/orrery/defaults.json";
}

} // namespace orrery
