#include "run/IndexSet.h"

#include "run/SweepVariables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

namespace orrery {
namespace {

using testing::ElementsAre;

struct AxisSpec {
    std::uint32_t count;
    std::uint32_t function;
    float constant;
};

/// Variables from 0 by 1, laid out as a run's grid.
std::vector<IndependentVariable> grid(const std::vector<AxisSpec>& axes) {
    std::vector<IndependentVariable> variables(axes.size());
    std::uint32_t stride = 1;
    for (std::size_t n = axes.size(); n-- > 0;) {
        variables[n].setStep(1);
        variables[n].setConstant(axes[n].constant);
        variables[n].setFunction(axes[n].function);
        variables[n].setStride(stride);
        variables[n].setStridesPerCycle(axes[n].count);
        stride *= axes[n].count;
    }
    return variables;
}

/// The same set by whole-set shifts and copies.
std::vector<std::uint32_t> shiftedAndCopied(const std::vector<IndependentVariable>& variables) {
    std::set<std::uint32_t> rows = {0};
    for (auto variable = variables.rbegin(); variable != variables.rend(); ++variable) {
        std::set<std::uint32_t> next;
        for (const std::uint32_t row : rows) {
            for (std::uint32_t i = 0; i < variable->stridesPerCycle(); ++i) {
                if (variable->onAxis() || i == heldIndex(*variable)) {
                    next.insert(row + i * variable->stride());
                }
            }
        }
        rows = next;
    }
    return {rows.begin(), rows.end()};
}

TEST(IndexSet, HoldsAllValuesOfTheAxesAtTheHeldOnesOfTheRest) {
    const auto days = currentIndexSet(grid({{3, 0, 2}, {4, 0, 1}, {100, 1, 0}}));
    ASSERT_EQ(days.size(), 100U);
    EXPECT_EQ(days.front(), 900U);
    EXPECT_EQ(days.back(), 999U);
    EXPECT_THAT(currentIndexSet(grid({{3, 0, 0}, {4, 2, 0}, {100, 0, 5}})), ElementsAre(5, 105, 205, 305));
    EXPECT_THAT(currentIndexSet(grid({{3, 0, 1}, {4, 0, 3}, {100, 0, 7}})), ElementsAre(707));
    EXPECT_THAT(currentIndexSet(grid({{2, 1, 0}, {3, 0, 2}, {2, 2, 0}})), ElementsAre(4, 5, 10, 11));
    EXPECT_THAT(currentIndexSet(grid({{1, 1, 0}, {2, 2, 0}})), ElementsAre(0, 1));
    EXPECT_THAT(currentIndexSet(grid({{3, 1, 0}, {0, 0, 0}})), ElementsAre());
    EXPECT_THAT(currentIndexSet({}), ElementsAre());
}

TEST(IndexSet, IsAscendingAndTheSetOfShiftsAndCopies) {
    std::mt19937 random(7);
    const auto upTo = [&](std::uint32_t last) { return std::uniform_int_distribution<std::uint32_t>(0, last)(random); };
    for (int round = 0; round < 300; ++round) {
        std::vector<AxisSpec> axes(1 + upTo(3));
        for (AxisSpec& axis : axes) {
            axis = {1 + upTo(5), upTo(2), static_cast<float>(upTo(8)) - 1.5F};
        }
        const auto variables = grid(axes);
        ASSERT_EQ(currentIndexSet(variables), shiftedAndCopied(variables)) << "round " << round;
    }
}

struct HeldCase {
    const char* name;
    float start;
    float step;
    float constant;
    std::uint32_t count;
    std::uint32_t index;
};

TEST(HeldIndex, StaysInsideTheGrid) {
    const HeldCase cases[] = {{"truncates", 0, 1, 2.9F, 5, 2},
                              {"belowStart", 1, 1, -7, 5, 0},
                              {"beyondLast", 0, 1, 99, 5, 4},
                              {"downwards", 4, -2, 0, 3, 2},
                              {"singleNotDouble", 0, 0.1F, 0.7F, 11, 7},
                              {"noStep", 0, 0, 3, 5, 4},
                              {"noNumber", 0, 0, 0, 5, 0},
                              {"noValues", 0, 1, 3, 0, 0},
                              {"allRows", 0, 1, 1e20F, 4294967295U, 4294967294U}};
    for (const HeldCase& row : cases) {
        IndependentVariable variable;
        variable.setStart(row.start);
        variable.setStep(row.step);
        variable.setConstant(row.constant);
        variable.setStridesPerCycle(row.count);
        EXPECT_EQ(heldIndex(variable), row.index) << row.name;
    }
}

TEST(HeldValueAt, IsHeldAtItsIndexAlsoWhereTheValueItselfIsNot) {
    unsigned nudged = 0;
    for (const auto& [start, step] : {std::pair(0.0F, 0.1F), {4.0F, 0.1F}, {1.0F, -0.1F}, {60.0F, 0.7F}}) {
        IndependentVariable variable;
        variable.setStart(start);
        variable.setStep(step);
        variable.setStridesPerCycle(200);
        for (std::uint32_t index = 0; index < variable.stridesPerCycle(); ++index) {
            variable.setConstant(heldValueAt(variable, index));
            EXPECT_EQ(heldIndex(variable), index) << start << " by " << step;
            EXPECT_NEAR(variable.constant(), valueAtIndex(variable, index), 1e-3F * std::abs(step));
            nudged += variable.constant() == valueAtIndex(variable, index) ? 0 : 1;
        }
    }
    EXPECT_GT(nudged, 0U) << "no case where rounding counts";
}

} // namespace
} // namespace orrery
