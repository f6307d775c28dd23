#include "engine/LookupTable.h"

#include "platform/values/Quoted.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace orrery::engine {

namespace {

constexpr std::string_view blanks = " \t\r\n";

/// The text in front of the separator, which is taken away with it.
std::string_view takeUpTo(std::string_view& text, std::string_view separators) {
    const std::size_t end = std::min(text.find_first_of(separators), text.size());
    const std::string_view front = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return front;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace

LookupTable::LookupTable(std::vector<Point> points, const Place& place, const std::string& owner)
    : m_points(std::move(points)) {
    const auto notAscending = [](const Point& left, const Point& right) { return !(left.first < right.first); };
    if (m_points.empty() || std::ranges::adjacent_find(m_points, notAscending) != m_points.end()) {
        throw OrreryError(owner + ": the table needs points with ascending first numbers.", place,
                          "Write it as “x y; x y; …”, x ascending.");
    }
}

LookupTable LookupTable::fromText(std::string_view text, const Place& place, const std::string& owner) {
    std::vector<Point> points;
    while (!trimmed(text).empty()) {
        std::string_view pair = trimmed(takeUpTo(text, ";"));
        if (pair.empty()) {
            continue;
        }
        const double x = numberIn(takeUpTo(pair, blanks), place, owner);
        points.emplace_back(x, numberIn(pair, place, owner));
    }
    return {std::move(points), place, owner};
}

double LookupTable::valueAt(double x) const {
    const auto right = std::ranges::upper_bound(m_points, x, {}, &Point::first);
    if (right == m_points.begin()) {
        return m_points.front().second;
    }
    const Point& left = *(right - 1);
    if (right == m_points.end()) {
        return std::isnan(x) ? x : left.second;
    }
    return left.second + (right->second - left.second) * (x - left.first) / (right->first - left.first);
}

double numberIn(std::string_view text, const Place& place, const std::string& owner) {
    const std::string_view digits = trimmed(text);
    double number = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size() || !std::isfinite(number)) {
        throw OrreryError(owner + ": " + (digits.empty() ? "no number" : quoted(digits) + " is not a number") + ".",
                          place, "Write a number such as 0.25.");
    }
    return number;
}

} // namespace orrery::engine
