#include "platform/values/Utf8.h"

#include <fmt/format.h>

#include <utility>

namespace orrery {
namespace {

constexpr char32_t replacement = 0xFFFD;

enum class Form { WellFormed, Malformed, Incomplete };

struct Sequence {
    char32_t codePoint = replacement;
    std::size_t length = 1; // of the character, or of the well-formed beginning of what is none
    Form form = Form::Malformed;
};

/// What is allowed after a lead byte: how many bytes follow, and the range of the first of them, which rules out
/// overlong forms, surrogates and what lies above U+10FFFF.
struct Lead {
    std::size_t following = 0; // 0: no lead byte
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
};

Lead leadOf(unsigned char byte) {
    if (byte >= 0xC2 && byte <= 0xDF) return {1};
    if (byte == 0xE0) return {2, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {2};
    if (byte == 0xF0) return {3, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3) return {3};
    if (byte == 0xF4) return {3, 0x80, 0x8F};
    return {};
}

/// The sequence at the start of a text that is not empty.
Sequence firstSequence(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return {first, 1, Form::WellFormed};
    Lead lead = leadOf(first);
    if (lead.following == 0) return {};
    char32_t codePoint = first & (0x3FU >> lead.following);
    for (std::size_t i = 1; i <= lead.following; ++i) {
        if (i == text.size()) return {replacement, i, Form::Incomplete};
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < lead.lowest || byte > lead.highest) return {replacement, i, Form::Malformed};
        lead.lowest = 0x80;
        lead.highest = 0xBF;
        codePoint = (codePoint << 6U) | (byte & 0x3FU);
    }
    return {codePoint, lead.following + 1, Form::WellFormed};
}

bool hidesOrReorders(char32_t c) {
    return c == 0x061C || (c >= 0x200B && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF;
}

void appendEscaped(std::string& line, char32_t c) {
    switch (c) {
    case '\n':
        line += "\\n";
        return;
    case '\r':
        line += "\\r";
        return;
    case '\t':
        line += "\\t";
        return;
    default:
        break;
    }
    if (c < 0x20 || c == 0x7F) {
        line += fmt::format("\\x{:02x}", static_cast<unsigned>(c));
    } else if ((c >= 0x80 && c < 0xA0) || hidesOrReorders(c)) {
        line += fmt::format("\\u{{{:x}}}", static_cast<unsigned>(c));
    } else {
        appendUtf8(line, c);
    }
}

} // namespace

bool isValidUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const Sequence sequence = firstSequence(bytes);
        if (sequence.form != Form::WellFormed) return false;
        bytes.remove_prefix(sequence.length);
    }
    return true;
}

char32_t nextCodePoint(std::string_view utf8, std::size_t& position) {
    const Sequence sequence = firstSequence(utf8.substr(position));
    position += sequence.length;
    return sequence.codePoint;
}

void appendUtf8(std::string& text, char32_t codePoint) {
    const auto put = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (codePoint < 0x80) {
        put(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        put(0xC0U | (codePoint >> 6U));
    } else {
        if (codePoint < 0x10000) {
            put(0xE0U | (codePoint >> 12U));
        } else {
            put(0xF0U | (codePoint >> 18U));
            put(0x80U | ((codePoint >> 12U) & 0x3FU));
        }
        put(0x80U | ((codePoint >> 6U) & 0x3FU));
    }
    put(0x80U | (codePoint & 0x3FU));
}

std::string escapedForLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const Sequence sequence = firstSequence(text);
        if (sequence.form == Form::WellFormed) {
            appendEscaped(line, sequence.codePoint);
        } else {
            for (const char byte : text.substr(0, sequence.length)) {
                line += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
            }
        }
        text.remove_prefix(sequence.length);
    }
    return line;
}

std::string Utf8Decoder::decode(std::string_view piece) {
    const std::string joined = std::exchange(m_carried, {}).append(piece);
    std::string text;
    text.reserve(joined.size());
    for (std::string_view rest = joined; !rest.empty();) {
        const Sequence sequence = firstSequence(rest);
        if (sequence.form == Form::Incomplete) {
            m_carried = rest;
            break;
        }
        if (sequence.form == Form::WellFormed) {
            text += rest.substr(0, sequence.length);
        } else {
            appendUtf8(text, replacement);
        }
        rest.remove_prefix(sequence.length);
    }
    return text;
}

std::string Utf8Decoder::finish() {
    std::string text;
    if (!m_carried.empty()) appendUtf8(text, replacement);
    m_carried.clear();
    return text;
}

} // namespace orrery
