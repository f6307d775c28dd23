#pragma once

#include "log/LogText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// What to look for: per character the two forms that count as equal (its small and its capital letter), as UTF-8.
class LogPattern {
public:
    /// @param characters at least one, none empty
    explicit LogPattern(std::vector<std::array<std::string, 2>> characters);

    /// The end of the match that begins at the position.
    [[nodiscard]] std::optional<std::size_t> matchAt(std::string_view bytes, std::size_t position) const;
    [[nodiscard]] bool mayBeginWith(char byte) const { return m_begins[static_cast<unsigned char>(byte)]; }
    [[nodiscard]] std::size_t longestMatch() const { return m_longest; } // bytes

private:
    std::vector<std::array<std::string, 2>> m_characters;
    std::array<bool, 256> m_begins{};
    std::size_t m_longest = 0;
};

enum class SearchDirection { Forward, Backward };

/// A search through a text in steps, once around: from the start to the text's end (or begin), and from the other side
/// to the start. What is appended meanwhile is not searched, nor what is dropped. The text lives longer, and is not
/// cleared meanwhile.
class LogSearch {
public:
    enum class State { Running, Found, NotFound };

    /// Forward, the first match that begins at or after `start`; backward, the last one that begins before it.
    LogSearch(const LogText& text, LogPattern pattern, std::uint64_t start, SearchDirection direction);

    /// Looks at up to 1 MB more.
    State step();
    [[nodiscard]] LogText::Row match() const { return m_match; } // once found

private:
    struct Range {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
    };
    [[nodiscard]] Range takeWindow(Range& range) const;
    bool searchWindow(Range window);

    const LogText& m_text;
    LogPattern m_pattern;
    SearchDirection m_direction;
    std::array<Range, 2> m_ranges; // where matches may begin, in the order of the search; what is left
    LogText::Row m_match;
};

} // namespace orrery
