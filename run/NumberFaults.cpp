#include "run/NumberFaults.h"

#include "platform/values/Numbers.h"
#include "platform/values/Quoted.h"
#include "run/SweepVariables.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace orrery {

namespace {

constexpr std::string_view blanks = " \t\n\v\f\r";

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string_view withoutBraces(std::string_view text) {
    text = trimmed(text);
    if (text.starts_with('{')) text.remove_prefix(1);
    if (text.ends_with('}')) text.remove_suffix(1);
    return trimmed(text);
}

bool isNumber(std::string_view text) {
    const ScannedFloat scanned = scanFloat(text);
    return scanned.length > 0 && scanned.length == text.size() && std::isfinite(scanned.value);
}

/// What was perhaps meant by a text that is not a number: one with braces around it, or with a decimal comma.
std::string meantNumber(std::string_view text) {
    std::string meant(withoutBraces(text));
    if (std::ranges::count(meant, ',') == 1) std::ranges::replace(meant, ',', '.');
    return isNumber(meant) ? meant : "";
}

/// Takes a number and what may stand after it off the text.
bool takeNumber(std::string_view& text, std::string_view separators) {
    const ScannedFloat scanned = scanFloat(text);
    if (scanned.length == 0 || !std::isfinite(scanned.value)) return false;
    text.remove_prefix(scanned.length);
    text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
    return true;
}

std::string pairText(const Point& point) {
    return fmt::format("{{ {}, {} }}", shortestText(point.x), shortestText(point.y));
}

std::uint64_t valueCount(float start, float stop, float step) {
    const double count = stepperCount(start, stop, step);
    return count <= std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint64_t>(count) : 0;
}

/// The exact number that a user means by the float's text.
double decimal(float value) {
    return pointFromString(shortestText(value)).x;
}

/// A stop with exactly that many values up to it, near start + (count − 1) × step; empty where there is none.
std::string stopFor(float start, float step, std::uint64_t count) {
    constexpr int tries = 4; // rounding is off by one or two of the last place
    const double meant = decimal(start) + static_cast<double>(count - 1) * decimal(step);
    auto stop = static_cast<float>(meant);
    for (int tried = 0; tried < tries && std::isfinite(stop); ++tried) {
        if (valueCount(start, stop, step) == count) return shortestText(stop);
        stop = std::nextafterf(stop, std::copysignf(std::numeric_limits<float>::infinity(), step));
    }
    return {};
}

} // namespace

std::optional<NumberFault> numberFault(std::string_view text, std::string_view countsAs) {
    const std::string_view number = trimmed(text);
    if (isNumber(number)) return std::nullopt;
    const std::string counts = countsAs.empty() ? "" : fmt::format(" and counts as {}", countsAs);
    if (number.empty()) return NumberFault{"is empty" + counts, {}};
    const ScannedFloat scanned = scanFloat(number);
    if (scanned.length == 0)
        return NumberFault{fmt::format("is {}, which is not a number{}", quoted(number), counts), meantNumber(number)};
    if (!std::isfinite(scanned.value)) return NumberFault{fmt::format("is {}, which is too large", quoted(number)), {}};
    if (countsAs.empty())
        return NumberFault{fmt::format("is {}, which is not a number", quoted(number)), meantNumber(number)};
    return NumberFault{fmt::format("is {}, of which only {} is read", quoted(number), number.substr(0, scanned.length)),
                       meantNumber(number)};
}

std::optional<NumberFault> sequenceFault(std::string_view text) {
    const std::string_view inside = withoutBraces(text);
    if (trimmed(text).starts_with('{')) {
        std::string_view rest = inside;
        while (takeNumber(rest, " \t,")) {
        }
        if (rest.empty() && !inside.empty()) return std::nullopt;
    }
    return numberFault(text, "");
}

std::optional<NumberFault> pairFault(std::string_view text) {
    std::string_view rest = withoutBraces(text);
    if (takeNumber(rest, " \t\n\v\f\r,") && takeNumber(rest, "") && rest.empty()) return std::nullopt;
    const std::string counts = pairText(pointFromString(text));
    if (trimmed(text).empty()) return NumberFault{"empty and count as " + counts, {}};
    return NumberFault{fmt::format("{}, which is read as {}", quoted(trimmed(text)), counts), {}};
}

std::optional<StopOffGrid> stopOffGrid(float start, float stop, float step) {
    constexpr float tolerance = 1e-3F; // of a step
    const std::uint64_t count = valueCount(start, stop, step);
    if (count == 0) return std::nullopt;
    const float rounding = 4 * std::numeric_limits<float>::epsilon() * (std::fabs(start) + std::fabs(stop));
    const float allowed = tolerance * std::fabs(step) + rounding;
    StopOffGrid found;
    found.last = start + static_cast<float>(count - 1) * step;
    if (!(std::fabs(stop - found.last) > allowed)) return std::nullopt;
    found.isRounding = std::fabs(stop - (found.last + step)) <= allowed;
    for (const std::uint64_t values : {count, count + 1}) {
        if (const std::string text = stopFor(start, step, values); !text.empty()) found.stops.push_back(text);
    }
    return found;
}

} // namespace orrery
