#pragma once

#include <map>
#include <optional>
#include <string>

namespace orrery {

/// Small values that outlive the program, under text keys.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    /// Stores the value; std::nullopt removes the key. A store that cannot be written logs a line and goes on.
    virtual void setObject(const std::optional<std::string>& value, const std::string& key) = 0;
    [[nodiscard]] virtual std::optional<std::string> stringForKey(const std::string& key) const = 0;
};

/// Defaults that are forgotten with the program.
class MemoryUserDefaults : public UserDefaults {
public:
    void setObject(const std::optional<std::string>& value, const std::string& key) override;
    [[nodiscard]] std::optional<std::string> stringForKey(const std::string& key) const override;

private:
    std::map<std::string, std::string> m_values;
};

/// Defaults in one JSON file (an object of texts), read on first use and replaced whole on every change. A file that
/// cannot be read as such is kept beside the new one under the name with "~".
class FileUserDefaults : public UserDefaults {
public:
    /// `path`: the file; its directory is made when missing.
    explicit FileUserDefaults(std::string path) : m_path(std::move(path)) {}
    void setObject(const std::optional<std::string>& value, const std::string& key) override;
    [[nodiscard]] std::optional<std::string> stringForKey(const std::string& key) const override;

    /// "orrery/defaults.json" under the user's configuration directory (XDG_CONFIG_HOME, else ~/.config).
    [[nodiscard]] static std::string standardPath();

private:
    std::map<std::string, std::string>& values() const;
    std::string m_path;
    mutable std::optional<std::map<std::string, std::string>> m_values;
    mutable bool m_damaged = false; // the file is there but could not be read
};

} // namespace orrery
