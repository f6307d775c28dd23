#include "batch/Report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace orrery {
namespace {

using testing::HasSubstr;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct CourseCase {
    const char* name;
    std::vector<double> values;
    std::size_t width;
    const char* course;
};
class BlockCourse : public testing::TestWithParam<CourseCase> {};
TEST_P(BlockCourse, SpreadsTheValuesOverEightHeights) {
    EXPECT_EQ(blockCourse(GetParam().values, GetParam().width), GetParam().course);
}
INSTANTIATE_TEST_SUITE_P(Edges, BlockCourse,
                         testing::Values(CourseCase{"none", {}, 8, ""}, CourseCase{"constant", {3, 3}, 8, "▁▁"},
                                         CourseCase{"rising", {0, 1, 2, 3, 4, 5, 6, 7}, 8, "▁▂▃▄▅▆▇█"},
                                         CourseCase{"shared", {0, 2, 6, 8}, 2, "▁█"},
                                         CourseCase{"unevenlyShared", {0, 4, 8}, 2, "▁█"},
                                         CourseCase{"gap", {0, notANumber, 1}, 8, "▁ █"},
                                         CourseCase{"nothingFinite", {notANumber}, 8, " "}),
                         [](const auto& row) { return row.param.name; });

IndependentVariable variable(const std::string& name, std::uint32_t stride, std::uint32_t count) {
    IndependentVariable made;
    made.setName(name);
    made.setStart(1);
    made.setStep(1);
    made.setStop(static_cast<float>(count));
    made.setStride(stride);
    made.setStridesPerCycle(count);
    return made;
}

TEST(Report, TellsGridStatisticsAndFiles) {
    RunResults results;
    results.grid = {{variable("/A/x", 2, 3), variable("day", 1, 2)}, 6};
    results.responses.variables = {{"A/y", "1"}, {"A/z", "2"}};
    const float gap = std::numeric_limits<float>::quiet_NaN();
    results.table.cells = CellBlock(std::vector<float>{0, gap, 2, gap, 4, gap, 6, gap, 8, gap, 10, gap});
    const std::string text = reportText(results, {"a.orrery", "/tmp/Zephyr.txt"});
    EXPECT_THAT(text, HasSubstr("/A/x      1 to 3 by 1, 3 values"));
    EXPECT_THAT(text, HasSubstr("6 rows"));
    EXPECT_THAT(text, HasSubstr("A/y                0          5         10  ▁▅█"));
    EXPECT_THAT(text, HasSubstr("A/z       no numbers"));
    EXPECT_THAT(text, HasSubstr("\n  /tmp/Zephyr.txt\n"));
}

} // namespace
} // namespace orrery
