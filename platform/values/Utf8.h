#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orrery {

/// Whether the bytes are well-formed UTF-8 (no overlong forms, no surrogates, nothing above U+10FFFF).
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

/// The code point that starts at `position`, which moves past it. A malformed sequence gives U+FFFD and moves over
/// its longest well-formed beginning, at least one byte.
[[nodiscard]] char32_t nextCodePoint(std::string_view utf8, std::size_t& position);

void appendUtf8(std::string& text, char32_t codePoint);

/// The text fit to be shown on one line: control characters and malformed bytes become "\n", "\t", "\r" or "\x1b",
/// what could hide or reorder text (line separators, direction marks) becomes "\u{202e}".
[[nodiscard]] std::string escapedForLine(std::string_view text);

/// Decodes a stream of bytes that arrives in pieces: what it returns is always well-formed UTF-8.
/// A sequence that a piece cuts is carried into the next piece; each malformed sequence becomes one U+FFFD.
class Utf8Decoder {
public:
    [[nodiscard]] std::string decode(std::string_view piece);
    /// The end of the stream: U+FFFD when a sequence was left incomplete, else empty.
    [[nodiscard]] std::string finish();

private:
    std::string m_carried; // an incomplete but so far well-formed sequence, at most 3 bytes
};

} // namespace orrery
