#include "log/LogSearch.h"

#include <algorithm>
#include <utility>

namespace orrery {

LogPattern::LogPattern(std::vector<std::array<std::string, 2>> characters) : m_characters(std::move(characters)) {
    for (const std::string& form : m_characters.front())
        m_begins[static_cast<unsigned char>(form.front())] = true;
    for (const auto& forms : m_characters)
        m_longest += std::max(forms[0].size(), forms[1].size());
}

std::optional<std::size_t> LogPattern::matchAt(std::string_view bytes, std::size_t position) const {
    for (const auto& forms : m_characters) {
        const std::string_view rest = bytes.substr(position);
        const auto form =
            std::ranges::find_if(forms, [rest](const std::string& text) { return rest.starts_with(text); });
        if (form == forms.end()) return std::nullopt;
        position += form->size();
    }
    return position;
}

LogSearch::LogSearch(const LogText& text, LogPattern pattern, std::uint64_t start, SearchDirection direction)
    : m_text(text), m_pattern(std::move(pattern)), m_direction(direction) {
    const Range before{text.begin(), std::clamp(start, text.begin(), text.end())};
    const Range behind{before.end, text.end()};
    if (direction == SearchDirection::Forward) {
        m_ranges = {behind, before};
    } else {
        m_ranges = {before, behind};
    }
}

LogSearch::State LogSearch::step() {
    for (Range& range : m_ranges) {
        if (range.begin == range.end) continue;
        return searchWindow(takeWindow(range)) ? State::Found : State::Running;
    }
    return State::NotFound;
}

LogSearch::Range LogSearch::takeWindow(Range& range) const {
    const std::uint64_t length = std::min<std::uint64_t>(range.end - range.begin, 1U << 20U);
    if (m_direction == SearchDirection::Forward) {
        range.begin += length;
        return {range.begin - length, range.begin};
    }
    range.end -= length;
    return {range.end, range.end + length};
}

bool LogSearch::searchWindow(Range window) {
    window.begin = std::min(std::max(window.begin, m_text.begin()), window.end); // what was dropped meanwhile
    const std::string bytes = m_text.bytes(window.begin, window.end + m_pattern.longestMatch() - 1);
    const std::size_t count = window.end - window.begin;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t position = m_direction == SearchDirection::Forward ? i : count - 1 - i;
        if (!m_pattern.mayBeginWith(bytes[position])) continue;
        if (const auto end = m_pattern.matchAt(bytes, position)) {
            m_match = {window.begin + position, window.begin + *end};
            return true;
        }
    }
    return false;
}

} // namespace orrery
