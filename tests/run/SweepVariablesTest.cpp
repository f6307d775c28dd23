#include "run/SweepVariables.h"

#include "platform/OrreryError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class DayOfYear : public Calendar {
public:
    explicit DayOfYear(int day) : m_day(day) {}
    [[nodiscard]] int ordinalDayInYear(const Date& /*date*/) const override { return m_day; }

private:
    int m_day;
};

SetupDictionary timeFrame(const char* runLength, const char* reportStep, const char* stepsPerDay) {
    SetupDictionary setup;
    setup.setStartDay(Date{});
    setup.setText(setup_key::runLength, runLength);
    setup.setText(setup_key::reportStep, reportStep);
    setup.setText(setup_key::stepsPerDay, stepsPerDay);
    return setup;
}

SetupDictionary withSteppers(EntryList steppers, const char* runLength = "100") {
    SetupDictionary setup = timeFrame(runLength, "10", "10");
    setup.setList(setup_key::steppers, std::move(steppers));
    return setup;
}

Entry stepper(const char* start, const char* stop, const char* step, const char* path = "/P/x") {
    return {{"portPath", path}, {"start", start}, {"stop", stop}, {"step", step}};
}

TEST(SweepVariables, StandInSetupOrderWithDayFastest) {
    const auto setup = withSteppers({stepper("0", "2", "1", "/P/a"), stepper("10", "40", "10", "/P/b")});
    const SweepGrid grid = constructIndependentVariables(setup, DayOfYear(1));

    ASSERT_EQ(grid.variables.size(), 3U);
    std::vector<std::string> names;
    std::vector<std::uint32_t> counts;
    std::vector<std::uint32_t> strides;
    std::vector<float> constants;
    for (const auto& variable : grid.variables) {
        names.push_back(variable.name());
        counts.push_back(variable.stridesPerCycle());
        strides.push_back(variable.stride());
        constants.push_back(variable.constant());
        EXPECT_EQ(variable.function(), 0U);
    }
    EXPECT_THAT(names, ElementsAre("/P/a", "/P/b", "day"));
    EXPECT_THAT(counts, ElementsAre(3, 4, 100));
    EXPECT_THAT(strides, ElementsAre(400, 100, 1));
    EXPECT_THAT(constants, ElementsAre(1.0F, 25.0F, 51.0F));
    EXPECT_EQ(grid.variables.back().stop(), 100.0F);
    EXPECT_EQ(grid.nRowsOfData, 1200U);
    EXPECT_THAT(sweepWarnings(setup, grid), ElementsAre());
}

struct StepperCase {
    const char* name;
    const char* start;
    const char* stop;
    const char* step;
    std::uint32_t count;
};

class StepperCount : public testing::TestWithParam<StepperCase> {};

TEST_P(StepperCount, FollowsSinglePrecision) {
    const StepperCase& row = GetParam();
    const auto setup = withSteppers({stepper(row.start, row.stop, row.step)});
    const SweepGrid grid = constructIndependentVariables(setup, DayOfYear(1));
    EXPECT_EQ(grid.variables.front().stridesPerCycle(), row.count);
    EXPECT_EQ(grid.nRowsOfData, row.count * 100);
    EXPECT_EQ(sweepWarnings(setup, grid).size(), row.count == 0 ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, StepperCount,
    testing::Values(StepperCase{"wholeSteps", "0", "1", "0.1", 11},
                    StepperCase{"singleNotDouble", "0", "0.7", "0.1", 8},
                    StepperCase{"differenceRoundedFirst", "0.1", "0.7", "0.1", 6},
                    StepperCase{"partOfAStepLeftOver", "0", "1", "0.3", 4}, StepperCase{"oneValue", "3", "3", "1", 1},
                    StepperCase{"downwards", "1", "0", "-0.25", 5}, StepperCase{"stepOfZero", "0", "1", "0", 0},
                    StepperCase{"noValuesAtAll", "", "", "", 0}, StepperCase{"againstItsStep", "1", "0", "0.1", 0},
                    StepperCase{"lessThanAStepAgainst", "1", "0.95", "0.1", 1},
                    StepperCase{"endless", "0", "1e39", "1", 0}, StepperCase{"trailingText", " 0 m", "2m", "1,5", 3}),
    [](const auto& row) { return row.param.name; });

struct TimeCase {
    const char* name;
    const char* runLength;
    const char* reportStep;
    const char* stepsPerDay;
    std::uint32_t count;
    float stop;
    float constant;
};

class TimeAxis : public testing::TestWithParam<TimeCase> {};

TEST_P(TimeAxis, CountsWithoutTheEndOfTheRun) {
    const TimeCase& row = GetParam();
    const auto setup = timeFrame(row.runLength, row.reportStep, row.stepsPerDay);
    const SweepGrid grid = constructIndependentVariables(setup, DayOfYear(366));
    ASSERT_EQ(grid.variables.size(), 1U);
    EXPECT_EQ(grid.variables[0].start(), 366.0F);
    EXPECT_EQ(grid.variables[0].stop(), row.stop);
    EXPECT_EQ(grid.variables[0].constant(), row.constant);
    EXPECT_EQ(grid.nRowsOfData, row.count);
    EXPECT_EQ(sweepWarnings(setup, grid).size(), row.count == 0 ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(Edges, TimeAxis,
                         testing::Values(TimeCase{"aReportADay", "100", "10", "10", 100, 465, 416},
                                         TimeCase{"noLengthIsOneDay", "0", "1", "4", 4, 366, 366.5F},
                                         TimeCase{"intervalLongerThanRun", "1", "20", "10", 0, 366, 366.5F},
                                         TimeCase{"noInterval", "10", "0", "10", 0, 375, 371},
                                         TimeCase{"noStepsInADay", "10", "10", "0", 0, 375, 371},
                                         TimeCase{"neither", "10", "0", "0", 0, 375, 371},
                                         TimeCase{"negative", "-10", "10", "10", 0, 355, 361}),
                         [](const auto& row) { return row.param.name; });

TEST(SweepVariables, StartAtDayOneWithoutAStartDay) {
    SetupDictionary setup = timeFrame("10", "1", "1");
    setup.setStartDay(std::nullopt);
    EXPECT_EQ(constructIndependentVariables(setup, DayOfYear(200)).variables[0].start(), 1.0F);
}

struct TooLargeCase {
    const char* name;
    EntryList steppers;
    const char* rows; // that the message names; nullptr when the grid fits
};

class GridSize : public testing::TestWithParam<TooLargeCase> {};

TEST_P(GridSize, IsRefusedBeyond32BitsWithItsRows) {
    const TooLargeCase& row = GetParam();
    const auto setup = withSteppers(row.steppers, "1");
    if (row.rows == nullptr) {
        EXPECT_NO_THROW((void)constructIndependentVariables(setup, DayOfYear(1)));
        return;
    }
    try {
        (void)constructIndependentVariables(setup, DayOfYear(1));
        FAIL() << "not refused";
    } catch (const OrreryError& error) {
        EXPECT_THAT(error.problem(), HasSubstr(std::string(row.rows) + " rows"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, GridSize,
    testing::Values(TooLargeCase{"wraps", {stepper("1", "65536", "1"), stepper("1", "65536", "1")}, "4294967296"},
                    TooLargeCase{"fits", {stepper("1", "65536", "1"), stepper("1", "65535", "1")}, nullptr},
                    TooLargeCase{"oneCount", {stepper("0", "1", "1e-10")}, "10000000001"},
                    TooLargeCase{"strideBehindAnEmptyAxis",
                                 {stepper("0", "1", "0"), stepper("1", "65536", "1"), stepper("1", "65536", "1")},
                                 "4294967296"},
                    TooLargeCase{"huge", {stepper("0", "3e38", "1"), stepper("0", "3e38", "1")}, "9e+76"}),
    [](const auto& row) { return row.param.name; });

} // namespace
} // namespace orrery
