#include "run/SweepVariables.h"

#include "platform/values/OrreryError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orrery {
namespace {

using testing::HasSubstr;

SetupDictionary withSteppers(EntryList steppers, const char* runLength = "100") {
    SetupDictionary setup = defaultSetup(); // a report a day
    setup.setText(setup_key::runLength, runLength);
    setup.setList(setup_key::steppers, std::move(steppers));
    return setup;
}

Entry stepper(const char* start, const char* stop, const char* step) {
    return {{"portPath", "/P/x"}, {"start", start}, {"stop", stop}, {"step", step}};
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
        const SweepGrid grid = constructIndependentVariables(setup, currentCalendar());
        EXPECT_EQ(grid.variables.front().stridesPerCycle(), row.count);
        EXPECT_EQ(grid.nRowsOfData, row.count * 100);
        EXPECT_EQ(sweepWarnings(setup, grid).size(), row.count == 0 ? 1U : 0U);
    }
}

TEST(SweepVariables, AreRefusedBeyond32BitsWithTheirRows) {
    const Entry most = stepper("1", "65536", "1");
    EXPECT_EQ(constructIndependentVariables(withSteppers({most, stepper("1", "65535", "1")}, "1"), currentCalendar())
                  .nRowsOfData,
              4294901760U);
    const std::pair<EntryList, const char*> cases[] = {
        {{most, most}, "4294967296 rows"},
        {{stepper("0", "1", "1e-10")}, "10000000001 rows"},
        {{stepper("0", "1", "0"), most, most}, "4294967296 rows"}, // no rows, but a stride too long
        {{stepper("0", "3e38", "1"), stepper("0", "3e38", "1")}, "9e+76 rows"}};
    for (const auto& [steppers, rows] : cases) {
        try {
            (void)constructIndependentVariables(withSteppers(steppers, "1"), currentCalendar());
            ADD_FAILURE() << "not refused: " << rows;
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.problem(), HasSubstr(rows));
        }
    }
}

} // namespace
} // namespace orrery
