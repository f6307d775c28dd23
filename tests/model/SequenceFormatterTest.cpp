#include "model/SequenceFormatter.h"

#include <gtest/gtest.h>

#include <utility>

namespace orrery {
namespace {

TEST(SequenceFormatter, OffersTextWithoutItsBraces) {
    const std::pair<const char*, const char*> cases[] = {
        {"  {3}  ", "3"}, {"{ 1.5 }", " 1.5 "},
        {"7", "7"},       {"{ 0, 0 }", " 0, 0 "},
        {"{{1}}", "{1}"}, {"", ""},
        {" \t ", ""},     {"{", ""},
        {"}", ""},        {"\n{1}", "\n{1"},
    };
    for (const auto& [stored, edited] : cases) {
        EXPECT_EQ(SequenceFormatter::editingStringForObjectValue(std::string(stored)), edited) << stored;
        EXPECT_EQ(SequenceFormatter::stringForObjectValue(std::string(stored)), stored);
    }
    EXPECT_EQ(SequenceFormatter::editingStringForObjectValue({}), "");
}

TEST(SequenceFormatter, AcceptsOneNumberAndNothingElse) {
    const std::pair<const char*, std::optional<float>> cases[] = {
        {" 7 ", 7.0F},        {"-2.5e1", -25.0F},    {"\r\n+.5\n", 0.5F},     {"0.1000000014901161193847656", 0.1F},
        {"-0", -0.0F},        {"1,5", std::nullopt}, {"12abc", std::nullopt}, {"", std::nullopt},
        {" ", std::nullopt},  {"1 2", std::nullopt}, {"0x10", std::nullopt},  {"nan", std::nullopt},
        {"1e", std::nullopt}, {"inf", std::nullopt}, {"1e999", std::nullopt}, {" 0, 0 ", std::nullopt},
        {".", std::nullopt},  {"- 1", std::nullopt},
    };
    for (const auto& [text, value] : cases) {
        const SequenceFormatter::Parsed parsed = SequenceFormatter::getObjectValue(text);
        EXPECT_EQ(parsed.value, value) << text;
        EXPECT_EQ(parsed.errorDescription, value ? "" : "Couldn't convert  to float") << text;
    }
}

TEST(SequenceFormatter, ShowsANumberAsTheShortestTextThatAPersonWrites) {
    const std::pair<const char*, const char*> cases[] = {{"0.1000000014901161", "0.1"},
                                                         {"-2.50e1", "-25"},
                                                         {"16777217", "16777216"},
                                                         {"1e5", "100000"},
                                                         {"0.00001", "0.00001"},
                                                         {"1e-6", "1e-06"},
                                                         {"1e9", "1000000000"},
                                                         {"1e10", "1e+10"},
                                                         {"-0", "-0"},
                                                         {"3.4e38", "3.4e+38"},
                                                         {"1e-45", "1e-45"},
                                                         {"1e-60", "0"}};
    for (const auto& [typed, shown] : cases) {
        const std::optional<float> value = SequenceFormatter::getObjectValue(typed).value;
        EXPECT_EQ(SequenceFormatter::stringForObjectValue(*value), shown);
        EXPECT_EQ(SequenceFormatter::getObjectValue(shown).value, value);
    }
}

} // namespace
} // namespace orrery
