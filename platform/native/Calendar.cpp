#include "platform/Calendar.h"

#include <time.h>

#include <algorithm>
#include <ctime>
#include <limits>

namespace orrery {
namespace {

class SystemCalendar : public Calendar {
public:
    [[nodiscard]] int ordinalDayInYear(const Date& date) const override {
        tzset(); // localtime_r alone need not look at TZ again
        constexpr std::int64_t latest = std::numeric_limits<std::int64_t>::max() - referenceDateInUnixTime;
        const std::time_t time = std::min(date.seconds, latest) + referenceDateInUnixTime;
        std::tm local{};
        if (localtime_r(&time, &local) != nullptr) return local.tm_yday + 1;
        return ordinalDayInUtc(date); // the year does not fit the system's fields: this is the best that is left
    }
};

} // namespace

Date currentDate() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return {now.tv_sec - referenceDateInUnixTime, static_cast<std::int32_t>(now.tv_nsec)};
}

const Calendar& currentCalendar() {
    static const SystemCalendar calendar;
    return calendar;
}

} // namespace orrery
