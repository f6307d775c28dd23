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

TEST(SequenceFormatter, ShowsANumberAsItsShortestText) {
    EXPECT_EQ(SequenceFormatter::stringForObjectValue(0.1F), "0.1");
    EXPECT_EQ(SequenceFormatter::stringForObjectValue(-25.0F), "-25");
}

} // namespace
} // namespace orrery
