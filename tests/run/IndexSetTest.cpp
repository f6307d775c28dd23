#include "run/IndexSet.h"

#include "run/SweepVariables.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orrery {
namespace {

TEST(IndexSet, IsEmptyWithoutVariables) {
    EXPECT_TRUE(currentIndexSet({}).empty());
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
