#include "document/setup/SetupDictionary.h"

#include "document/setup/SetupForm.h"

#include <utility>

namespace orrery {

const std::string* SetupDictionary::text(std::string_view key) const {
    const auto found = m_values.find(key);
    return found == m_values.end() ? nullptr : std::get_if<std::string>(&found->second);
}

std::string_view SetupDictionary::textOrEmpty(std::string_view key) const {
    const std::string* found = text(key);
    return found == nullptr ? std::string_view() : *found;
}

std::optional<Date> SetupDictionary::startDay() const {
    const auto found = m_values.find(setup_key::startDay);
    const Date* date = found == m_values.end() ? nullptr : std::get_if<Date>(&found->second);
    return date == nullptr ? std::nullopt : std::optional(*date);
}

const EntryList* SetupDictionary::list(std::string_view key) const {
    const auto found = m_values.find(key);
    return found == m_values.end() ? nullptr : std::get_if<EntryList>(&found->second);
}

const EntryList& SetupDictionary::entries(std::string_view key) const {
    static const EntryList none;
    const EntryList* found = list(key);
    return found == nullptr ? none : *found;
}

bool SetupDictionary::contains(std::string_view key) const {
    return m_values.contains(key);
}

void SetupDictionary::setText(std::string_view key, std::string value) {
    set(key, std::move(value));
}

void SetupDictionary::setStartDay(std::optional<Date> date) {
    if (date) {
        set(setup_key::startDay, *date);
    } else {
        remove(setup_key::startDay);
    }
}

void SetupDictionary::setList(std::string_view key, EntryList entries) {
    set(key, std::move(entries));
}

EntryList& SetupDictionary::mutableList(std::string_view key) {
    Value& value = m_values[std::string(key)];
    if (!std::holds_alternative<EntryList>(value)) value = EntryList();
    return std::get<EntryList>(value);
}

void SetupDictionary::remove(std::string_view key) {
    const std::string name(key); // the caller's view may be of the text that goes
    m_values.erase(name);
    changed(name);
}

void SetupDictionary::setValue(std::string_view key, std::optional<Value> value) {
    if (value) {
        set(key, std::move(*value));
    } else {
        remove(key);
    }
}

void SetupDictionary::addObserver(std::string_view key, Observer observer) {
    m_observers.emplace(key, std::move(observer));
}

void SetupDictionary::set(std::string_view key, Value value) {
    const std::string name(key);
    m_values.insert_or_assign(name, std::move(value));
    changed(name);
}

void SetupDictionary::changed(const std::string& key) {
    // Copies, because an observer may add observers or set further keys.
    std::vector<Observer> observers;
    const auto [first, last] = m_observers.equal_range(key);
    for (auto each = first; each != last; ++each) {
        observers.push_back(each->second);
    }
    for (const Observer& observer : observers) {
        observer(key);
    }
}

SetupDictionary defaultSetup() {
    SetupDictionary setup;
    setup.setStartDay(Date());
    for (const setup_form::Setting& setting : setup_form::settings) {
        if (setting.atFirst) setup.setText(setting.key, std::string(*setting.atFirst));
    }
    return setup;
}

} // namespace orrery
