#pragma once

#include "platform/values/Date.h"

namespace orrery {

[[nodiscard]] Date currentDate();

/// The user's calendar and time zone.
class Calendar {
public:
    virtual ~Calendar() = default;
    /// Ordinal of the date's day within its year, 1 … 366, in local time.
    [[nodiscard]] virtual int ordinalDayInYear(const Date& date) const = 0;
};

/// The Gregorian calendar in the time zone of the environment (TZ, else the system's). Lives as long as the program.
[[nodiscard]] const Calendar& currentCalendar();

} // namespace orrery
