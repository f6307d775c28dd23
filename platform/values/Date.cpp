#include "platform/values/Date.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>

namespace orrery {
namespace {

constexpr std::int64_t secondsInDay = 86400;
constexpr std::int64_t referenceDay = 730791; // 1 January 2001, in days since 1 March of the year 0
constexpr std::int64_t daysInEra = 146097;    // 400 years, after which the calendar repeats

struct CivilDay {
    std::int64_t year = 0;
    int month = 1; // 1 … 12
    int day = 1;   // 1 … 31
};

std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

bool isLeapYear(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(std::int64_t year, int month) {
    constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days.at(static_cast<std::size_t>(month - 1)) + (month == 2 && isLeapYear(year) ? 1 : 0);
}

/// Days since the reference date. Years are counted from March, so that the leap day is a year's last.
std::int64_t dayNumber(const CivilDay& civil) {
    const std::int64_t year = civil.month > 2 ? civil.year : civil.year - 1;
    const std::int64_t era = floorDivide(year, 400);
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * ((civil.month + 9) % 12) + 2) / 5 + civil.day - 1;
    return era * daysInEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - referenceDay;
}

/// The inverse of dayNumber.
CivilDay civilDay(std::int64_t number) {
    const std::int64_t day = number + referenceDay;
    const std::int64_t era = floorDivide(day, daysInEra);
    const std::int64_t dayOfEra = day - era * daysInEra;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), static_cast<int>(month),
            static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1)};
}

/// The fields of a text that follows the pattern, where "0" stands for a digit, "+" for a sign and anything else for
/// itself. Each run of digits is one number; the sign goes to `negative`.
struct Fields {
    std::array<int, 8> numbers{};
    bool negative = false;
};

std::optional<Fields> fieldsOf(std::string_view text, std::string_view pattern) {
    if (text.size() != pattern.size()) return std::nullopt;
    Fields fields;
    std::size_t index = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (pattern[i] == '0') {
            if (text[i] < '0' || text[i] > '9') return std::nullopt;
            fields.numbers.at(index) = fields.numbers.at(index) * 10 + (text[i] - '0');
            if (i + 1 == pattern.size() || pattern[i + 1] != '0') ++index;
        } else if (pattern[i] == '+' && text[i] == '-') {
            fields.negative = true;
        } else if (text[i] != pattern[i]) {
            return std::nullopt;
        }
    }
    return fields;
}

} // namespace

std::string dateDescription(const Date& date) {
    const std::int64_t day = floorDivide(date.seconds, secondsInDay);
    const std::int64_t second = (date.seconds % secondsInDay + secondsInDay) % secondsInDay;
    const CivilDay civil = civilDay(day);
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02} +0000", civil.year, civil.month, civil.day, second / 3600,
                       second / 60 % 60, second % 60);
}

std::optional<Date> dateWithString(std::string_view text) {
    const std::optional<Fields> fields = fieldsOf(text, "0000-00-00 00:00:00 +0000");
    if (!fields) return std::nullopt;
    const auto [year, month, day, hour, minute, second, offset, unused] = fields->numbers;
    if (year < 1 || month < 1 || month > 12 || day < 1 || day > daysInMonth(year, month)) return std::nullopt;
    if (hour > 23 || minute > 59 || second > 59 || offset / 100 > 23 || offset % 100 > 59) return std::nullopt;
    const std::int64_t offsetSeconds = (offset / 100 * 60 + offset % 100) * 60LL;
    const std::int64_t local = dayNumber({year, month, day}) * secondsInDay + hour * 3600LL + minute * 60LL + second;
    const Date date{local + (fields->negative ? offsetSeconds : -offsetSeconds), 0};
    const std::int64_t yearInUtc = civilDay(floorDivide(date.seconds, secondsInDay)).year;
    return yearInUtc >= 1 && yearInUtc <= 9999 ? std::optional(date) : std::nullopt; // what can be written again
}

int ordinalDayInUtc(const Date& date) {
    const std::int64_t day = floorDivide(date.seconds, secondsInDay);
    return static_cast<int>(day - dayNumber({civilDay(day).year, 1, 1})) + 1;
}

} // namespace orrery
