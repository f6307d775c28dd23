#include "model/SequenceFormatter.h"

#include "platform/Numbers.h"

#include <cmath>
#include <cstddef>

namespace orrery {

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view whiteSpace = " \t\n\v\f\r";

std::string_view trimmed(std::string_view text, std::string_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

} // namespace

std::string SequenceFormatter::stringForObjectValue(const ObjectValue& value) {
    if (const float* number = std::get_if<float>(&value)) return shortestText(*number);
    const std::string* text = std::get_if<std::string>(&value);
    return text == nullptr ? std::string() : *text;
}

std::string SequenceFormatter::editingStringForObjectValue(const ObjectValue& value) {
    const std::string whole = stringForObjectValue(value);
    std::string_view text = trimmed(whole, blanks);
    if (text.starts_with('{')) text.remove_prefix(1);
    if (text.ends_with('}')) text.remove_suffix(1);
    return std::string(text);
}

SequenceFormatter::Parsed SequenceFormatter::getObjectValue(std::string_view text) {
    const std::string_view number = trimmed(text, whiteSpace);
    const ScannedFloat scanned = scanFloat(number);
    // Beyond the range of a single the text would become "inf", which reads back as no number at all.
    if (scanned.length == 0 || scanned.length != number.size() || !std::isfinite(scanned.value)) {
        return {std::nullopt, "Couldn't convert  to float"};
    }
    return {scanned.value, {}};
}

} // namespace orrery
