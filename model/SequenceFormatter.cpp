#include "model/SequenceFormatter.h"

#include "platform/values/Numbers.h"

#include <cstddef>

namespace orrery {

namespace {

constexpr std::string_view blanks = " \t";

std::string_view withoutBlanksAround(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::string SequenceFormatter::stringForObjectValue(const ObjectValue& value) {
    if (const float* number = std::get_if<float>(&value)) return plainText(*number);
    const std::string* text = std::get_if<std::string>(&value);
    return text == nullptr ? std::string() : *text;
}

std::string SequenceFormatter::editingStringForObjectValue(const ObjectValue& value) {
    const std::string whole = stringForObjectValue(value);
    std::string_view text = withoutBlanksAround(whole);
    if (text.starts_with('{')) text.remove_prefix(1);
    if (text.ends_with('}')) text.remove_suffix(1);
    return std::string(text);
}

SequenceFormatter::Parsed SequenceFormatter::getObjectValue(std::string_view text) {
    const TypedNumber typed = typedNumber(text);
    return {typed.value, typed.value ? "" : "Couldn't convert  to float"};
}

} // namespace orrery
