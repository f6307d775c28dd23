#include "document/EngineText.h"

#include <fmt/format.h>

#include <algorithm>

namespace orrery {

namespace {

/// Where the first character at or after the byte begins.
std::size_t characterAfter(std::string_view text, std::size_t byte) {
    while (byte < text.size() && (static_cast<unsigned char>(text[byte]) & 0xC0U) == 0x80U) {
        ++byte;
    }
    return byte;
}

} // namespace

void EngineText::append(std::string_view text) {
    if (m_tail.empty() && m_leftOut == 0) {
        const std::size_t room = std::min(text.size(), headBytes - std::min(headBytes, m_head.size()));
        const std::size_t taken = characterAfter(text, room);
        m_head += text.substr(0, taken);
        text.remove_prefix(taken);
    }
    m_tail += text;
    if (m_tail.size() <= 2 * tailBytes) return;
    const std::size_t cut = characterAfter(m_tail, m_tail.size() - tailBytes);
    m_tail.erase(0, cut);
    m_leftOut += cut;
}

std::string EngineText::text() const {
    if (m_leftOut == 0) return m_head + m_tail;
    return m_head + fmt::format("\n… {} bytes are left out here …\n", m_leftOut) + m_tail;
}

} // namespace orrery
