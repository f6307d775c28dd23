#include "platform/Calendar.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

namespace orrery {
namespace {

struct DayRow {
    const char* zone;
    const char* date;
    int ordinal;
};

TEST(Calendar, CountsDaysInLocalTime) {
    for (const DayRow& row : {DayRow{"UTC0", "2001-01-01 00:00:00 +0000", 1},
                              {"XYZ-2", "2001-12-31 21:59:59 +0000", 365},
                              {"XYZ-2", "2001-12-31 22:00:00 +0000", 1},
                              {"XYZ8", "2001-01-01 00:00:00 +0000", 366},
                              {"UTC0", "2004-12-31 23:59:59 +0000", 366},
                              {"UTC0", "0001-03-01 00:00:00 +0000", 60}}) {
        setenv("TZ", row.zone, 1);
        EXPECT_EQ(currentCalendar().ordinalDayInYear(*dateWithString(row.date)), row.ordinal) << row.date << row.zone;
    }
    unsetenv("TZ");
}

TEST(Calendar, SurvivesDatesOutOfAnyCalendar) {
    for (const std::int64_t seconds :
         {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max()}) {
        const int ordinal = currentCalendar().ordinalDayInYear({seconds, 0});
        EXPECT_TRUE(ordinal >= 1 && ordinal <= 366) << ordinal;
        EXPECT_EQ(dateWithString(dateDescription({seconds, 0})), std::nullopt);
    }
}

} // namespace
} // namespace orrery
