#include "platform/values/StringMap.h"

#include <algorithm>

namespace orrery {

StringMap::StringMap(std::initializer_list<Item> items) {
    for (const Item& item : items)
        set(item.first, item.second);
}

const std::string* StringMap::find(std::string_view key) const {
    const auto item = std::ranges::find(m_items, key, &Item::first);
    return item == m_items.end() ? nullptr : &item->second;
}

std::string_view StringMap::text(std::string_view key) const {
    const std::string* value = find(key);
    return value == nullptr ? std::string_view() : std::string_view(*value);
}

void StringMap::set(std::string_view key, std::string value) {
    const auto item = std::ranges::find(m_items, key, &Item::first);
    if (item != m_items.end()) {
        item->second = std::move(value);
    } else {
        m_items.emplace_back(key, std::move(value));
    }
}

void StringMap::remove(std::string_view key) {
    std::erase_if(m_items, [key](const Item& item) { return item.first == key; });
}

bool operator==(const StringMap& left, const StringMap& right) {
    return left.size() == right.size() && std::ranges::is_permutation(left.m_items, right.m_items);
}

} // namespace orrery
