#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery {

/// A small map from text to text that keeps the order in which its keys were first set.
///
/// List entries and model records are such maps; they hold a handful of keys, so a flat list beats a tree.
class StringMap {
public:
    using Item = std::pair<std::string, std::string>;

    StringMap() = default;
    StringMap(std::initializer_list<Item> items);

    /// The value under the key; nullptr when the key is absent, which differs from holding the empty text.
    [[nodiscard]] const std::string* find(std::string_view key) const;
    /// The value under the key, or the empty text when the key is absent.
    [[nodiscard]] std::string_view text(std::string_view key) const;
    [[nodiscard]] bool contains(std::string_view key) const { return find(key) != nullptr; }

    /// The value under the key, to be changed in place or moved out; nullptr when the key is absent.
    [[nodiscard]] std::string* find(std::string_view key) {
        return const_cast<std::string*>(std::as_const(*this).find(key));
    }

    /// Adds a key that the caller knows to be absent, without looking for it.
    void append(std::string key, std::string value) { m_items.emplace_back(std::move(key), std::move(value)); }
    void reserve(std::size_t count) { m_items.reserve(count); }
    void set(std::string_view key, std::string value);
    void remove(std::string_view key);

    [[nodiscard]] std::size_t size() const { return m_items.size(); }
    [[nodiscard]] bool empty() const { return m_items.empty(); }
    [[nodiscard]] auto begin() const { return m_items.begin(); }
    [[nodiscard]] auto end() const { return m_items.end(); }

    /// Equal when both hold the same keys with the same values, in whatever order.
    friend bool operator==(const StringMap& left, const StringMap& right);

private:
    std::vector<Item> m_items;
};

} // namespace orrery
