#include "platform/values/ElidedName.h"
#include "platform/values/MacRoman.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "platform/values/StringMap.h"
#include "platform/values/Utf8.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace orrery {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

TEST(ScanFloat, TakesTheLongestNumberAtTheStart) {
    struct Row {
        std::string text;
        float value;
        std::size_t length;
    };
    const std::string zeros(60, '0');
    // clang-format off
    const std::vector<Row> rows = {
        {"1e", 1, 1}, {"1e+", 1, 1}, {"1e5", 100000, 3}, {".5", 0.5F, 2}, {"5.", 5, 2}, {"5.e1", 50, 4},
        {"+5", 5, 2}, {"0x10", 0, 1}, {"1,5", 1, 1}, {"1.5.2", 1.5F, 3}, {"0e999", 0, 5},
        {"1e39", infinity, 4}, {"-1e999", -infinity, 6}, {"1e99999999999999999999", infinity, 22},
        {"1e-46", 0, 5}, {"7.1e-46", 1.4012985e-45F, 7}, {"1e-99999999999999999999", 0, 23},
        {zeros + "1e60", infinity, 64}, {"0." + zeros + "1e61", 1, 66}, {std::string(400, '9'), infinity, 400},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const ScannedFloat scanned = scanFloat(row.text);
        EXPECT_EQ(scanned.length, row.length);
        EXPECT_EQ(scanned.value, row.value);
    }
    for (const char* text : {"", "-", "-.", ".", ".e5", "+-5", "--5", " 5", "inf", "-inf", "nan", "１"}) {
        EXPECT_EQ(scanFloat(text).length, 0U) << text;
    }
    EXPECT_TRUE(std::signbit(scanFloat("-0").value));
    EXPECT_TRUE(std::signbit(scanFloat("-1e-999").value));
}

TEST(ScanFloat, RoundsToTheNearestSingleAndTiesToEven) {
    std::mt19937 random(1); // the same numbers every time
    for (int i = 0; i < 20000; ++i) {
        const auto bits = static_cast<std::uint32_t>(random()) & 0x7FFFFFFFU;
        const auto low = std::bit_cast<float>(bits);
        const auto high = std::bit_cast<float>(bits + 1);
        if (!std::isfinite(low) || !std::isfinite(high)) continue;
        const std::string middle = fmt::format("{:.200e}", (double(low) + double(high)) / 2); // all its digits
        const std::size_t exponent = middle.find('e');
        const std::string above = middle.substr(0, exponent) + "1" + middle.substr(exponent);
        ASSERT_EQ(scanFloat(middle).value, bits % 2 == 0 ? low : high) << middle;
        ASSERT_EQ(scanFloat(above).value, high) << above;
        ASSERT_EQ(scanFloat(shortestText(low)).value, low);
    }
}

TEST(FloatValue, IsTheLeadingNumberOrZero) {
    const std::vector<std::pair<std::string, float>> rows = {
        {"", 0}, {"abc", 0}, {"1,5", 1}, {"- 5", 0}, {"12abc", 12}, {"\u00A05", 0}, {" \t\r\n\v\f12 days", 12}};
    for (const auto& [text, value] : rows)
        EXPECT_EQ(floatValue(text), value) << text;
}

TEST(ShortestText, ReadsBackTheSame) {
    EXPECT_EQ(shortestText(0.1F), "0.1");
    EXPECT_EQ(shortestText(0.1), "0.1");
    EXPECT_EQ(shortestText(100000.0F), "1e+05");
    EXPECT_EQ(shortestText(-0.0F), "-0");
    EXPECT_EQ(shortestText(-infinity), "-inf");
    EXPECT_EQ(shortestText(-std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST(PointForm, IsReadAsAPairOfNumbers) {
    const std::vector<std::pair<std::string, Point>> rows = {
        {"{ 1, 1 }", {1, 1}}, {"{1,1}", {1, 1}}, {" {2.5 ,-3e1} ", {2.5, -30}},
        {"{ 7 }", {7, 0}},    {"7", {7, 0}},     {"4, 5", {4, 5}},
        {"", {0, 0}},         {"{ , }", {0, 0}}, {"wide", {0, 0}},
        {"{1;2}", {1, 0}},    {"{1 2}", {1, 2}}, {"{\n1,\t2\n}", {1, 2}}};
    for (const auto& [text, point] : rows)
        EXPECT_EQ(pointFromString(text), point) << text;
}

struct Utf8Row {
    std::string bytes;
    std::string shown; // with "?" for each U+FFFD
};
const std::vector<Utf8Row> utf8Rows = {
    {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "aé€😀"},
    {"\xC0\xAF", "??"},                 // overlong
    {"\xE0\x80\x80", "???"},            // overlong
    {"\xF0\x8F\xBF\xBF", "????"},       // overlong
    {"\xED\xA0\x80x", "???x"},          // surrogate
    {"\xF4\x90\x80\x80", "????"},       // above U+10FFFF
    {"\xF5\xFFz", "??z"},               // no lead bytes
    {"\xE2\x82x", "?x"},                // cut by a letter: one for its well-formed beginning
    {"\xF0\x9F\x98\xE2\x82\xAC", "?€"}, // cut by another character
    {"\x80\xBF", "??"},                 // nothing to follow
    {"x\xE2\x82", "x?"},                // cut by the end
    {"\xEF\xBF\xBD\xEF\xBF\xBF", "?\xEF\xBF\xBF"},
};

TEST(Utf8, MalformedSequencesBecomeOneReplacementEachHoweverTheStreamIsCut) {
    for (const Utf8Row& row : utf8Rows) {
        SCOPED_TRACE(escapedForLine(row.bytes));
        std::string expected;
        for (const char c : row.shown)
            expected += c == '?' ? "\xEF\xBF\xBD" : std::string(1, c);
        for (std::size_t piece = 1; piece <= row.bytes.size(); ++piece) {
            Utf8Decoder decoder;
            std::string text;
            for (std::size_t i = 0; i < row.bytes.size(); i += piece)
                text += decoder.decode(row.bytes.substr(i, piece));
            text += decoder.finish();
            EXPECT_EQ(text, expected) << "pieces of " << piece;
            EXPECT_TRUE(isValidUtf8(text));
        }
        EXPECT_EQ(isValidUtf8(row.bytes), row.bytes == expected);
        std::string oneByOne;
        for (std::size_t position = 0; position < row.bytes.size();) {
            appendUtf8(oneByOne, nextCodePoint(row.bytes, position));
        }
        EXPECT_EQ(oneByOne, expected);
    }
}

TEST(MacRoman, EveryByteSurvivesAndHasItsCharacter) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    EXPECT_EQ(encodeMacRoman(decodeMacRoman(all)), all);
    EXPECT_EQ(decodeMacRoman("\xDB\xF0\xC6\x8A\xFF"), "€\xEF\xA3\xBF∆äˇ");
}

TEST(MacRoman, NamesTheFirstCharacterThatItLacks) {
    EXPECT_EQ(encodeMacRoman("ąb"), std::nullopt);
    EXPECT_EQ(encodeMacRoman("\xE9"), std::nullopt);
    EXPECT_EQ(firstCharacterNotInMacRoman("é€中ą"), "中");
    EXPECT_EQ(firstCharacterNotInMacRoman("a\xE9z"), "\xEF\xBF\xBD");
    EXPECT_EQ(firstCharacterNotInMacRoman("Größe"), "");
}

TEST(StringMap, KeepsOrderAndComparesWithoutIt) {
    StringMap map = {{"a", "1"}, {"b", "2"}, {"a", "3"}};
    EXPECT_EQ(map.size(), 2U);
    EXPECT_EQ(map, (StringMap{{"b", "2"}, {"a", "3"}}));
    EXPECT_NE(map, (StringMap{{"a", "3"}, {"b", ""}}));
    map.remove("a");
    map.set("c", "");
    EXPECT_THAT(std::vector<StringMap::Item>(map.begin(), map.end()),
                testing::ElementsAre(testing::Pair("b", "2"), testing::Pair("c", "")));
    EXPECT_TRUE(map.contains("c"));
    EXPECT_EQ(map.find("a"), nullptr);
}

TEST(Messages, AreOneLineWithPlaceAndRemedy) {
    const OrreryError error("It is odd.", {"a\nb.xml", 3, 7}, "Mend it.");
    EXPECT_STREQ(error.what(), "a\\nb.xml:3:7: It is odd. Mend it.");
    EXPECT_STREQ(OrreryError("Odd.").what(), "Odd.");
    EXPECT_EQ((Place{"f", 0, 5}.text()), "f");
    EXPECT_EQ(messageText("a\x1B]0;\xFF\t\xE2\x80\xAE"), "a\\x1b]0;\\xff\\t\\u{202e}");
    const std::string shortened = messageText(std::string(99, 'x') + "€€");
    EXPECT_EQ(shortened, std::string(99, 'x') + "…");
}

TEST(ElidedName, KeepsTheLastPartWholeAndAsMuchOfTheBeginningAsFits) {
    struct Row {
        std::string name;
        std::size_t room; // bytes, three of them the ellipsis's
        std::string shown;
    };
    const std::vector<Row> rows = {
        {"/Field/Crop/biomass", 19, "/Field/Crop/biomass"},
        {"/Field/Crop/biomass", 18, "/Field/…/biomass"}, // "/Field/C" would cost as much as it saves
        {"/Field/Crop/biomass", 13, "/F…/biomass"},
        {"/Field/Crop/biomass", 11, "…/biomass"},
        {"/Field/Crop/biomass", 10, ""},
        {"/Wiese/Gräser/Höhe", 14, "/Wies…/Höhe"},
        {"/Gräser/Höhe", 13, "/Gr…/Höhe"}, // not half of an ä
        {"day", 2, ""},
        {"", 0, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(elidedName(row.name, [&](const std::string& text) { return text.size() <= row.room; }), row.shown)
            << row.name << ' ' << row.room;
    }
}

} // namespace
} // namespace orrery
