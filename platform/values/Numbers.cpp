#include "platform/values/Numbers.h"

#include "platform/values/Quoted.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace orrery {
namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Whether a number in this text, which is out of the range of its type, is too large rather than too small.
bool isHuge(std::string_view number) {
    const std::size_t exponentAt = number.find_first_of("eE");
    const std::string_view mantissa = number.substr(0, exponentAt);
    const std::size_t leading = mantissa.find_first_of("123456789");
    if (leading == std::string_view::npos) return false;
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    // The decimal exponent of the leading digit, before that of the text is added.
    const double position = static_cast<double>(point) - static_cast<double>(leading) - (leading < point ? 1 : 0);
    if (exponentAt == std::string_view::npos) return position > 0;
    std::string_view digits = number.substr(exponentAt + 1);
    const bool negative = digits.front() == '-';
    if (negative || digits.front() == '+') digits.remove_prefix(1);
    double exponent = 0;
    for (const char digit : digits)
        exponent = exponent * 10 + (digit - '0');
    return position + (negative ? -exponent : exponent) > 0;
}

template <class Real>
struct Scanned {
    Real value = 0;
    std::size_t length = 0;
};

template <class Real>
Scanned<Real> scan(std::string_view text) {
    std::string_view number = text;
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) number.remove_prefix(1);
    // from_chars knows "inf" and "nan" and takes a second sign, the grammar here does not.
    if (number.empty() || !(isDigit(number.front()) || number.front() == '.')) return {};
    Real value = 0;
    const auto [end, fault] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (fault == std::errc::invalid_argument) return {};
    if (fault == std::errc::result_out_of_range) {
        const auto used = static_cast<std::size_t>(end - number.data());
        value = isHuge(number.substr(0, used)) ? std::numeric_limits<Real>::infinity() : Real(0);
    }
    return {negative ? -value : value, static_cast<std::size_t>(end - text.data())};
}

template <class Real>
std::string shortest(Real value) {
    if (std::isnan(value)) return "nan"; // to_chars would show the sign of a NaN
    std::array<char, 40> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(whiteSpace);
    return first == std::string_view::npos ? "" : text.substr(first, text.find_last_not_of(whiteSpace) - first + 1);
}

/// What to type instead, where a comma is what keeps the text from being a number.
std::string pointForComma(std::string_view text) {
    std::string corrected(text);
    const std::size_t comma = corrected.find(',');
    if (comma == std::string::npos) return {};
    corrected[comma] = '.';
    if (scanFloat(corrected).length != corrected.size()) return {};
    return " Write " + corrected + ", with a decimal point.";
}

/// Passes over blanks and punctuation of the point form, then takes a number; 0 without one.
double takeCoordinate(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r{,"), text.size()));
    const Scanned<double> scanned = scan<double>(text);
    text.remove_prefix(scanned.length);
    return scanned.value;
}

} // namespace

ScannedFloat scanFloat(std::string_view text) {
    const Scanned<float> scanned = scan<float>(text);
    return {scanned.value, scanned.length};
}

float floatValue(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    return scanFloat(text).value;
}

std::string shortestText(float value) {
    return shortest(value);
}
std::string shortestText(double value) {
    return shortest(value);
}

std::string plainText(float value) {
    constexpr float smallest = 1e-5F;
    constexpr float largest = 1e9F;
    const float size = std::fabs(value);
    if (!(size >= smallest && size <= largest)) return shortest(value);
    std::array<char, 40> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed);
    return {buffer.data(), result.ptr};
}

TypedNumber typedNumber(std::string_view text) {
    const std::string_view number = trimmed(text);
    if (number.empty()) return {std::nullopt, "There is no number."};
    const ScannedFloat scanned = scanFloat(number);
    if (scanned.length != number.size())
        return {std::nullopt, quoted(number) + " is not a number." + pointForComma(number)};
    // It would be shown as "inf", which reads back as no number at all.
    if (!std::isfinite(scanned.value)) return {std::nullopt, quoted(number) + " is too large a number."};
    return {scanned.value, {}};
}

std::string sizeText(std::uint64_t bytes) {
    constexpr std::array<const char*, 7> units = {"bytes", "kB", "MB", "GB", "TB", "PB", "EB"};
    auto amount = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; amount >= 1000; ++unit) {
        amount /= 1000;
    }
    const double steps = amount < 10 ? 10 : 1;
    return fmt::format("{} {}", std::floor(amount * steps) / steps, units.at(unit));
}

std::string groupedThousands(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (auto place = static_cast<std::ptrdiff_t>(digits.size()) - 3; place > 0; place -= 3) {
        digits.insert(static_cast<std::size_t>(place), ",");
    }
    return digits;
}

Point pointFromString(std::string_view text) {
    const double x = takeCoordinate(text);
    const double y = takeCoordinate(text);
    return {x, y};
}

} // namespace orrery
