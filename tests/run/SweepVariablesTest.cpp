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

TEST(SweepVariables, CountStepperValuesInSinglePrecision) {
    const StepperCase cases[] = {{"wholeSteps", "0", "1", "0.1", 11},
                                 {"singleNotDouble", "0", "0.7", "0.1", 8},
                                 {"differenceRoundedFirst", "0.1", "0.7", "0.1", 6},
                                 {"partOfAStepLeftOver", "0", "1", "0.3", 4},
                                 {"oneValue", "3", "3", "1", 1},
                                 {"downwards", "1", "0", "-0.25", 5},
                                 {"stepOfZero", "0", "1", "0", 0},
                                 {"noValuesAtAll", "", "", "", 0},
                                 {"againstItsStep", "1", "0", "0.1", 0},
                                 {"lessThanAStepAgainst", "1", "0.95", "0.1", 1},
                                 {"endless", "0", "1e39", "1", 0},
                                 {"trailingText", " 0 m", "2m", "1,5", 3}};
    for (const StepperCase& row : cases) {
        SCOPED_TRACE(row.name);
        const auto setup = withSteppers({stepper(row.start, row.stop, row.step)});
        const SweepGrid grid = constructIndependentVariables(setup, DayOfYear(1));
        EXPECT_EQ(grid.variables.front().stridesPerCycle(), row.count);
        EXPECT_EQ(grid.nRowsOfData, row.count * 100);
        EXPECT_EQ(sweepWarnings(setup, grid).size(), row.count == 0 ? 1U : 0U);
    }
}

struct TimeCase {
    const char* name;
    const char* runLength;
    const char* reportStep;
    const char* stepsPerDay;
    std::uint32_t count;
    float stop;
    float constant;
};

TEST(SweepVariables, CountDaysWithoutTheEndOfTheRun) {
    const TimeCase cases[] = {{"aReportADay", "100", "10", "10", 100, 465, 416},
                              {"noLengthIsOneDay", "0", "1", "4", 4, 366, 366.5F},
                              {"intervalLongerThanRun", "1", "20", "10", 0, 366, 366.5F},
                              {"noInterval", "10", "0", "10", 0, 375, 371},
                              {"noStepsInADay", "10", "10", "0", 0, 375, 371},
                              {"neither", "10", "0", "0", 0, 375, 371},
                              {"negative", "-10", "10", "10", 0, 355, 361}};
    for (const TimeCase& row : cases) {
        SCOPED_TRACE(row.name);
        const auto setup = timeFrame(row.runLength, row.reportStep, row.stepsPerDay);
        const SweepGrid grid = constructIndependentVariables(setup, DayOfYear(366));
        ASSERT_EQ(grid.variables.size(), 1U);
        EXPECT_EQ(grid.variables[0].start(), 366.0F);
        EXPECT_EQ(grid.variables[0].stop(), row.stop);
        EXPECT_EQ(grid.variables[0].constant(), row.constant);
        EXPECT_EQ(grid.nRowsOfData, row.count);
        EXPECT_EQ(sweepWarnings(setup, grid).size(), row.count == 0 ? 1U : 0U);
    }
}

TEST(SweepVariables, StartAtDayOneWithoutAStartDay) {
    SetupDictionary setup = timeFrame("10", "1", "1");
    setup.setStartDay(std::nullopt);
    EXPECT_EQ(constructIndependentVariables(setup, DayOfYear(200)).variables[0].start(), 1.0F);
}

TEST(SweepVariables, AreRefusedBeyond32BitsWithTheirRows) {
    const Entry most = stepper("1", "65536", "1");
    EXPECT_EQ(
        constructIndependentVariables(withSteppers({most, stepper("1", "65535", "1")}, "1"), DayOfYear(1)).nRowsOfData,
        4294901760U);
    const std::pair<EntryList, const char*> cases[] = {
        {{most, most}, "4294967296 rows"},
        {{stepper("0", "1", "1e-10")}, "10000000001 rows"},
        {{stepper("0", "1", "0"), most, most}, "4294967296 rows"}, // no rows, but a stride too long
        {{stepper("0", "3e38", "1"), stepper("0", "3e38", "1")}, "9e+76 rows"}};
    for (const auto& [steppers, rows] : cases) {
        try {
            (void)constructIndependentVariables(withSteppers(steppers, "1"), DayOfYear(1));
            ADD_FAILURE() << "not refused: " << rows;
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.problem(), HasSubstr(rows));
        }
    }
}

} // namespace
} // namespace orrery
