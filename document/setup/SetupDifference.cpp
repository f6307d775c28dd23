#include "document/setup/SetupDifference.h"

#include "document/setup/SetupForm.h"
#include "document/setup/SetupReader.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace orrery {

namespace {

using setup_form::Field;
using setup_form::List;
using setup_form::Setting;

constexpr std::size_t mostNamed = 3;

std::string_view leafOf(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string shown(std::string_view text) {
    return text.empty() ? "nothing" : messageText(text);
}

/// The value as it counts: numbers that are written in two ways are the same.
std::string numberForm(std::string_view text) {
    const TypedNumber number = typedNumber(text);
    return number.value ? shortestText(*number.value) : std::string(text);
}

std::string pairForm(std::string_view text) {
    const Point point = pointFromString(text);
    return fmt::format("{} {}", point.x, point.y);
}

/// The last part of each path, unless that is the same of both.
std::pair<std::string, std::string> shortPaths(std::string_view one, std::string_view other) {
    if (leafOf(one) == leafOf(other)) return {shown(one), shown(other)};
    return {shown(leafOf(one)), shown(leafOf(other))};
}

std::string changeText(std::string_view name, const std::pair<std::string, std::string>& nowAndBefore) {
    return fmt::format("{} {} (was {})", name, nowAndBefore.first, nowAndBefore.second);
}

/// Of a date at midnight the day alone.
std::string_view dayText(std::string_view text) {
    constexpr std::string_view midnight = " 00:00:00 +0000";
    return text.ends_with(midnight) ? text.substr(0, text.size() - midnight.size()) : text;
}

std::string comparedForm(const SetupDictionary& setup, const Setting& setting) {
    const std::string text = settingText(setup, setting);
    if (text.empty()) return std::string(setting.otherwise.value_or(""));
    if (setting.kind == setup_form::Kind::Number) return numberForm(text);
    return setting.kind == setup_form::Kind::Pair ? pairForm(text) : text;
}

void addSettings(std::vector<std::string>& parts, const SetupDictionary& before, const SetupDictionary& after) {
    for (const Setting& setting : setup_form::settings) {
        if (comparedForm(before, setting) == comparedForm(after, setting)) continue;
        const std::string now = settingText(after, setting);
        const std::string then = settingText(before, setting);
        const bool isPath = setting.kind == setup_form::Kind::ModelPath;
        parts.push_back(changeText(setting.userWord, isPath ? shortPaths(now, then)
                                                            : std::pair(shown(dayText(now)), shown(dayText(then)))));
    }
}

/// What ports are called where only their names are told: by the last part of the path, unless two share it.
class PortNames {
public:
    PortNames(const SetupDictionary& before, const SetupDictionary& after) {
        for (const SetupDictionary* setup : {&before, &after}) {
            for (const List& list : setup_form::lists) {
                for (const Entry& entry : setup->entries(list.key)) {
                    const std::string_view path = entry.text(setup_form::portPath.key);
                    const auto [first, isNew] = m_paths.try_emplace(leafOf(path), path);
                    if (!isNew && first->second != path) m_shared.insert(leafOf(path));
                }
            }
        }
    }
    [[nodiscard]] std::string of(const Entry& entry) const {
        const std::string_view path = entry.text(setup_form::portPath.key);
        return shown(m_shared.contains(leafOf(path)) ? path : leafOf(path));
    }

private:
    std::map<std::string_view, std::string_view> m_paths; // per last part
    std::set<std::string_view> m_shared;
};

std::string comparedForm(const Entry& entry, const Field& field) {
    const std::string_view text = entry.text(field.key);
    if (field.key == setup_form::portPath.key || field.key == "outputPath") return std::string(text);
    return field.key == "coordinates" ? pairForm(text) : numberForm(text);
}

/// The fields that make two entries the same row, or that make them equal.
std::string keyOf(const Entry& entry, const List& list, bool ofAll) {
    std::string key;
    for (const Field& field : list.fields) {
        const bool names = field.key == setup_form::portPath.key || field.key == "coordinates";
        if (ofAll || names) key += comparedForm(entry, field) + '\0';
    }
    return key;
}

/// What one list has that it had not, in words per entry.
class ListDifference {
public:
    ListDifference(const List& list, const EntryList& before, const EntryList& after, const PortNames& names)
        : m_list(list), m_before(before), m_after(after), m_names(names), m_partners(after.size(), none),
          m_hasPartner(before.size()) {
        pair(true); // equal ones first, so that of two rows of a port the right one has changed
        pair(false);
    }

    void addTo(std::vector<std::string>& parts) const {
        std::vector<std::string> changed;
        std::vector<std::string> added;
        std::vector<std::string> removed;
        for (std::size_t i = 0; i < m_after.size(); ++i) {
            if (m_partners[i] == none) {
                added.push_back(nameOf(m_after[i]) + addedValue(m_after[i]));
            } else if (keyOf(m_after[i], m_list, true) != keyOf(m_before[m_partners[i]], m_list, true)) {
                changed.push_back(changeText(nameOf(m_after[i]) + (isOutput() ? " to" : ""),
                                             values(m_after[i], m_before[m_partners[i]])));
            }
        }
        for (std::size_t i = 0; i < m_before.size(); ++i) {
            if (!m_hasPartner[i]) removed.push_back(nameOf(m_before[i]));
        }
        if (!changed.empty()) parts.push_back(firstOf(changed, "; "));
        addWords(parts, "added", added);
        addWords(parts, "removed", removed);
        if (isReordered()) parts.push_back(fmt::format("{}s in another order", m_list.userWord));
    }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void pair(bool equal) {
        std::map<std::string, std::deque<std::size_t>> free;
        for (std::size_t i = 0; i < m_before.size(); ++i) {
            if (!m_hasPartner[i]) free[keyOf(m_before[i], m_list, equal)].push_back(i);
        }
        for (std::size_t i = 0; i < m_after.size(); ++i) {
            const auto found = m_partners[i] == none ? free.find(keyOf(m_after[i], m_list, equal)) : free.end();
            if (found == free.end() || found->second.empty()) continue;
            m_partners[i] = found->second.front();
            m_hasPartner[m_partners[i]] = true;
            found->second.pop_front();
        }
    }

    [[nodiscard]] bool isOutput() const { return m_list.key == setup_key::outputs; }

    [[nodiscard]] std::string nameOf(const Entry& entry) const {
        const std::string_view coordinates = entry.text("coordinates");
        const bool isElsewhere = pointFromString(coordinates) != Point{};
        return m_names.of(entry) + (isElsewhere ? " at " + shown(coordinates) : "");
    }

    [[nodiscard]] std::string addedValue(const Entry& entry) const {
        return isOutput() ? "" : ' ' + values(entry, entry).first;
    }

    [[nodiscard]] std::pair<std::string, std::string> values(const Entry& now, const Entry& before) const {
        if (isOutput()) return shortPaths(now.text("outputPath"), before.text("outputPath"));
        return {valueOf(now), valueOf(before)};
    }

    [[nodiscard]] std::string valueOf(const Entry& entry) const {
        if (m_list.key == setup_key::initializations) return shown(entry.text("value"));
        return fmt::format("{}…{} by {}", shown(entry.text("start")), shown(entry.text("stop")),
                           shown(entry.text("step")));
    }

    static std::string firstOf(const std::vector<std::string>& words, std::string_view separator) {
        const std::size_t named = std::min(words.size(), mostNamed);
        std::string text = fmt::format("{}", fmt::join(std::span(words).first(named), separator));
        if (words.size() > named) text += fmt::format(" and {} more", groupedThousands(words.size() - named));
        return text;
    }

    void addWords(std::vector<std::string>& parts, std::string_view what, const std::vector<std::string>& words) const {
        if (words.empty()) return;
        parts.push_back(
            fmt::format("{}{} {}: {}", m_list.userWord, words.size() == 1 ? "" : "s", what, firstOf(words, ", ")));
    }

    [[nodiscard]] bool isReordered() const {
        std::vector<std::size_t> kept;
        std::ranges::copy_if(m_partners, std::back_inserter(kept), [](std::size_t partner) { return partner != none; });
        return !std::ranges::is_sorted(kept);
    }

    const List& m_list;
    const EntryList& m_before;
    const EntryList& m_after;
    const PortNames& m_names;
    std::vector<std::size_t> m_partners; // of each entry, where it stood before
    std::vector<bool> m_hasPartner;      // of each entry before
};

} // namespace

std::string setupDifference(const SetupDictionary& before, const SetupDictionary& after) {
    std::vector<std::string> parts;
    addSettings(parts, before, after);
    const PortNames names(before, after);
    for (const List& list : setup_form::lists) {
        ListDifference(list, before.entries(list.key), after.entries(list.key), names).addTo(parts);
    }
    return fmt::format("{}", fmt::join(parts, "; "));
}

std::string setupDifference(std::string_view before, std::string_view after) {
    if (before == after) return "";
    try {
        const LoadedSetup one = readSetup(before, "");
        const LoadedSetup other = readSetup(after, "");
        if (one.parsed && other.parsed) return setupDifference(one.dictionary, other.dictionary);
    } catch (const OrreryError&) { // as below
    }
    return "a setup that cannot be read";
}

} // namespace orrery
