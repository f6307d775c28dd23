#include "document/KeepingPreferences.h"

#include <charconv>
#include <cstdint>
#include <string>

namespace orrery {

namespace {

constexpr const char* keepsKey = "keepsRuns";
constexpr const char* runsKey = "keptRunsLimit";
constexpr const char* bytesKey = "keptBytesLimit";

template <class Number>
void readNumber(const UserDefaults& defaults, const char* key, Number& number) {
    const std::string text = defaults.stringForKey(key).value_or("");
    std::from_chars(text.data(), text.data() + text.size(), number); // leaves it where the text is not a number
}

} // namespace

KeepingPreferences keepingPreferences(const UserDefaults& defaults) {
    KeepingPreferences preferences;
    preferences.keeps = defaults.stringForKey(keepsKey) != "no";
    readNumber(defaults, runsKey, preferences.limits.runs);
    readNumber(defaults, bytesKey, preferences.limits.bytes);
    return preferences;
}

void setKeepingPreferences(UserDefaults& defaults, const KeepingPreferences& preferences) {
    defaults.setObject(preferences.keeps ? "yes" : "no", keepsKey);
    defaults.setObject(std::to_string(preferences.limits.runs), runsKey);
    defaults.setObject(std::to_string(preferences.limits.bytes), bytesKey);
}

} // namespace orrery
