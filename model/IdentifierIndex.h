#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery {

/// Finds the numbers of things by their identifiers, which stay with the things.
///
/// One flat table, of which most look-ups touch a single place: a model has hundreds of thousands of objects, and a map
/// of linked entries would wait for the memory several times for each.
template <class KeyOf>
class IdentifierIndex {
public:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    /// `keyOf(number)` is the identifier of an entry, the same as long as the index is used.
    explicit IdentifierIndex(KeyOf keyOf) : m_keyOf(std::move(keyOf)), m_entries(1024) {}

    /// The number under the identifier, or `none`.
    [[nodiscard]] std::uint32_t find(std::string_view identifier) const {
        return m_entries[placeOf(identifier, hashOf(identifier))].number;
    }

    /// Puts the number under the identifier. Returns the one that stood there before, or `none`.
    std::uint32_t put(std::string_view identifier, std::uint32_t number) {
        if (2 * ++m_count > m_entries.size()) grow();
        const std::uint32_t hash = hashOf(identifier);
        Entry& entry = m_entries[placeOf(identifier, hash)];
        entry.hash = hash;
        return std::exchange(entry.number, number);
    }

private:
    struct Entry {
        std::uint32_t hash = 0;
        std::uint32_t number = none;
    };

    static std::uint32_t hashOf(std::string_view identifier) {
        return static_cast<std::uint32_t>(std::hash<std::string_view>()(identifier));
    }

    /// Where the identifier stands, or the free place where it would.
    [[nodiscard]] std::size_t placeOf(std::string_view identifier, std::uint32_t hash) const {
        std::size_t place = hash & (m_entries.size() - 1);
        while (m_entries[place].number != none &&
               (m_entries[place].hash != hash || m_keyOf(m_entries[place].number) != identifier)) {
            place = (place + 1) & (m_entries.size() - 1);
        }
        return place;
    }

    void grow() {
        const std::vector<Entry> before = std::exchange(m_entries, std::vector<Entry>(2 * m_entries.size()));
        for (const Entry& entry : before) {
            std::size_t place = entry.hash & (m_entries.size() - 1);
            while (entry.number != none && m_entries[place].number != none) {
                place = (place + 1) & (m_entries.size() - 1);
            }
            if (entry.number != none) m_entries[place] = entry;
        }
    }

    KeyOf m_keyOf;
    std::vector<Entry> m_entries; // a power of two, at least half of it free
    std::size_t m_count = 0;      // no fewer than there are entries
};

} // namespace orrery
