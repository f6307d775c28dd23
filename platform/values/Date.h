#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orrery {

/// An instant: the time since the reference date, 1 January 2001, 00:00:00 UTC. The default is that date.
struct Date {
    std::int64_t seconds = 0;
    std::int32_t nanoseconds = 0; // 0 … 999,999,999, added to seconds

    friend auto operator<=>(const Date&, const Date&) = default; // NOLINT(modernize-use-nullptr): its 0 is no pointer
};

inline constexpr std::int64_t referenceDateInUnixTime = 978307200; // seconds since 1970 began

/// "yyyy-mm-dd hh:mm:ss +0000": the date in UTC at whole seconds.
[[nodiscard]] std::string dateDescription(const Date& date);

/// The date of a text "yyyy-mm-dd hh:mm:ss ±hhmm"; std::nullopt for any other text (no trimming, every field in range).
[[nodiscard]] std::optional<Date> dateWithString(std::string_view text);

/// Ordinal of the date's day within its year, 1 … 366, in UTC.
[[nodiscard]] int ordinalDayInUtc(const Date& date);

} // namespace orrery
