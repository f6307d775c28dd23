#include "run/PlotChoices.h"

#include "run/SweepSummary.h"

#include <gtest/gtest.h>

namespace orrery::test {
namespace {

IndependentVariable variable(const char* name, std::uint32_t count, float constant = 0, std::uint32_t function = 0) {
    IndependentVariable made;
    made.setName(name);
    made.setStep(1);
    made.setStridesPerCycle(count);
    made.setConstant(constant);
    made.setFunction(static_cast<PlotRole>(function));
    return made;
}

PlotChoices chosen() {
    PlotChoices choices{{variable("a", 5, 3), variable("day", 9, 4, 1)}, {{"x", "1"}, {"y", "2"}}};
    choices.responses[1].setValue("includep", true);
    choices.responses[1].setValue("scale", 2.5F);
    return choices;
}

TEST(PlotChoicesTest, AreKeptForTheSameNamesOnly) {
    const PlotChoices choices = chosen();
    std::vector variables{variable("a", 3, 1), variable("day", 9)}; // 3 lies beyond the new grid
    std::vector<ResponseVariable> responses{{"x", "1"}, {"y", "2"}};
    ASSERT_TRUE(keepChoices(choices, variables, responses));
    EXPECT_EQ(variables[0].constant(), 1.0F);
    EXPECT_EQ(variables[1].function(), PlotRole::Axis1);
    EXPECT_EQ(responses[1].scale(), 2.5F);
    EXPECT_TRUE(responses[1].includep());

    std::vector renamed{variable("b", 5), variable("day", 9)};
    EXPECT_FALSE(keepChoices(choices, renamed, responses));
    std::vector<ResponseVariable> fewer{{"x", "1"}};
    EXPECT_FALSE(keepChoices(choices, variables, fewer));
    EXPECT_FALSE(keepChoices({choices.variables, {{"x", "1"}, {"y", "2"}}}, variables, responses)) << "none included";
}

TEST(SweepSummaryTest, TellsTheGridAndItsSize) {
    struct Case {
        const char* name;
        std::vector<Entry> steppers;
        const char* size;
    };
    const auto stepper = [](const char* start, const char* step, const char* stop) {
        return Entry{{"portPath", "/p"}, {"start", start}, {"step", step}, {"stop", stop}};
    };
    const std::vector<Case> cases{
        {"timeAlone", {}, "100 rows, less than 0.1 MB"},
        {"grid", {stepper("1", "1", "12"), stepper("0", "1", "3")}, "12 × 4 × 100 = 4,800 rows, about 0.6 MB"},
        {"noStep", {stepper("1", "0", "12")}, "0 × 100 = 0 rows, less than 0.1 MB"},
        {"tooLarge", {stepper("0", "1e-6", "1e6"), stepper("0", "1", "1e6")}, ""},
    };
    for (const Case& row : cases) {
        SetupDictionary setup = defaultSetup();
        setup.setList(setup_key::steppers, row.steppers);
        EXPECT_EQ(sweepSummary(setup, currentCalendar(), 8), row.size) << row.name;
    }
}

} // namespace
} // namespace orrery::test
