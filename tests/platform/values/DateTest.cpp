#include "platform/values/Date.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace orrery {
namespace {

constexpr std::int64_t day = 86400;

TEST(DateText, GivesTheInstantOfEveryWellFormedText) {
    const std::vector<std::pair<std::string, std::int64_t>> rows = {
        {"2001-01-01 00:00:00 +0000", 0},
        {"2001-01-01 02:00:00 +0200", 0},
        {"2000-12-31 18:30:00 -0530", 0},
        {"2000-12-31 23:59:59 +0000", -1},
        {"1970-01-01 00:00:00 +0000", -978307200},
        {"2000-02-29 00:00:00 +0000", -307 * day},
        {"0001-01-01 00:00:00 +0000", -730485 * day},
        {"9999-12-31 23:59:59 +0000", 2921574 * day - 1},
    };
    for (const auto& [text, seconds] : rows) {
        const std::optional<Date> date = dateWithString(text);
        ASSERT_TRUE(date) << text;
        EXPECT_EQ(date->seconds, seconds) << text;
        EXPECT_EQ(dateWithString(dateDescription(*date)), date) << text;
    }
}

TEST(DateText, RefusesEveryOtherText) {
    // clang-format off
    for (const char* text : {
        "", "2001-01-01", "2001-01-01 00:00:00",
        " 2001-01-01 00:00:00 +0000", "2001-01-01 00:00:00 +0000 ", "2001-01-01T00:00:00 +0000",
        "2001-13-01 00:00:00 +0000", "2001-00-01 00:00:00 +0000", "2001-02-29 00:00:00 +0000",
        "1900-02-29 00:00:00 +0000", "2001-01-00 00:00:00 +0000", "2001-01-01 24:00:00 +0000",
        "2001-01-01 00:60:00 +0000", "2001-01-01 00:00:60 +0000", "2001-01-01 00:00:00 0000",
        "2001-01-01 00:00:00 +2400", "2001-01-01 00:00:00 +0060", "0000-01-01 00:00:00 +0000",
        "-001-01-01 00:00:00 +0000", "2001-1-01 00:00:00 +00000", "0001-01-01 00:00:00 +0100",
        "9999-12-31 23:59:59 -0100"}) {
        // clang-format on
        EXPECT_EQ(dateWithString(text), std::nullopt) << text;
    }
}

TEST(DateText, ReadsBackEveryInstantOfTheYearsThatItCanWrite) {
    std::mt19937_64 random(2); // the same dates every time
    std::uniform_int_distribution<std::int64_t> seconds(-730485 * day, 2921574 * day - 1);
    for (int i = 0; i < 20000; ++i) {
        const Date date{seconds(random), 0};
        ASSERT_EQ(dateWithString(dateDescription(date)), date) << date.seconds;
    }
}

} // namespace
} // namespace orrery
