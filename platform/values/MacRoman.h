#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orrery {

/// The Unicode code point of a byte in Mac OS Roman (0xDB is the euro sign, 0xF0 the private-use U+F8FF).
[[nodiscard]] char32_t macRomanCodePoint(unsigned char byte);

/// Mac OS Roman bytes as UTF-8. Every byte has a character, so this cannot fail.
[[nodiscard]] std::string decodeMacRoman(std::string_view bytes);

/// UTF-8 text as Mac OS Roman bytes; std::nullopt when a character is not in Mac OS Roman or the text is not UTF-8.
[[nodiscard]] std::optional<std::string> encodeMacRoman(std::string_view utf8);

/// The first character of the text that Mac OS Roman lacks, as UTF-8 (one malformed byte as U+FFFD); empty if none.
[[nodiscard]] std::string firstCharacterNotInMacRoman(std::string_view utf8);

} // namespace orrery
