#pragma once

#include "platform/values/Date.h"
#include "platform/values/StringMap.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orrery {

/// One row of a port list: a map with the keys of its kind. A key without a value is absent.
///   output:         portPath, outputPath
///   initialization: portPath, coordinates, value
///   stepper:        portPath, start, step, stop
using Entry = StringMap;
using EntryList = std::vector<Entry>;

/// Keys of the setup dictionary.
namespace setup_key {
inline constexpr std::string_view modelPath = "modelPath";
inline constexpr std::string_view startDay = "startDay";
inline constexpr std::string_view stepsPerDay = "stepsPerDay";
inline constexpr std::string_view runLength = "runLength";
inline constexpr std::string_view reportStep = "reportStep";
inline constexpr std::string_view dimensions = "dimensions";
inline constexpr std::string_view gcd = "GCD";
inline constexpr std::string_view outputs = "outputs";
inline constexpr std::string_view initializations = "initializations";
inline constexpr std::string_view steppers = "steppers";
} // namespace setup_key

/// Everything of a document that is saved: text values under keys, with two exceptions, `startDay` (a date) and the
/// three port lists. Numbers stay the text that the user typed. An absent key differs from an empty text.
///
/// Observers are told of every change of their key, also when the new value equals the old one. They belong to this
/// object: a dictionary that takes another's place starts without any. Owned by its document; main thread.
class SetupDictionary {
public:
    using Observer = std::function<void(std::string_view key)>;
    using Value = std::variant<std::string, Date, EntryList>;
    using Values = std::map<std::string, Value, std::less<>>;

    SetupDictionary() = default;
    SetupDictionary(const SetupDictionary&) = delete;
    SetupDictionary& operator=(const SetupDictionary&) = delete;
    SetupDictionary(SetupDictionary&&) = default;
    SetupDictionary& operator=(SetupDictionary&&) = default;
    ~SetupDictionary() = default;

    /// The text under the key; nullptr when the key is absent or holds no text.
    [[nodiscard]] const std::string* text(std::string_view key) const;
    /// The text under the key, or the empty text.
    [[nodiscard]] std::string_view textOrEmpty(std::string_view key) const;
    [[nodiscard]] std::optional<Date> startDay() const;
    /// The port list under the key; nullptr when the key is absent (no entry was ever added).
    [[nodiscard]] const EntryList* list(std::string_view key) const;
    /// The port list's entries, none when the key is absent.
    [[nodiscard]] const EntryList& entries(std::string_view key) const;
    [[nodiscard]] bool contains(std::string_view key) const;

    void setText(std::string_view key, std::string value);
    void setStartDay(std::optional<Date> date); // std::nullopt removes the key
    void setList(std::string_view key, EntryList entries);
    /// The port list under the key to change in place, made when it is absent. Tells the observers nothing: a list's
    /// editor reports its change to the document itself.
    [[nodiscard]] EntryList& mutableList(std::string_view key);
    void remove(std::string_view key);

    [[nodiscard]] const Values& values() const { return m_values; }
    /// Sets the key to the value, or removes it without one.
    void setValue(std::string_view key, std::optional<Value> value);

    /// Adds an observer of one key. It is called after each set or removal of that key.
    void addObserver(std::string_view key, Observer observer);

private:
    void set(std::string_view key, Value value);
    void changed(const std::string& key);

    Values m_values;
    std::multimap<std::string, Observer, std::less<>> m_observers;
};

/// The dictionary of a new, untitled setup: startDay the reference date, stepsPerDay "10", dimensions "{ 1, 1 }",
/// runLength "100", reportStep "10", and nothing else.
[[nodiscard]] SetupDictionary defaultSetup();

} // namespace orrery
