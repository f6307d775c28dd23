#include "plot/data/Camera.h"

#include <gtest/gtest.h>

namespace orrery {
namespace {

TEST(CircularStep, GoesTheShortWayRound) {
    const float steps[][3] = {{350, 10, 20}, {10, 350, -20}, {10, 100, 90}, {0, 180, 180}, {0, 181, -179}, {7, 7, 0}};
    for (const auto& [from, to, step] : steps) {
        EXPECT_EQ(circularStep(from, to, 360), step) << from << " to " << to;
    }
}

TEST(WrappedRotation, FoldsOnlyWhatLiesBeyondTheEnd) {
    const float rotations[][2] = {{725, 5}, {360, 0}, {359.5F, 359.5F}, {-30, -30}, {-725, -725}};
    for (const auto& [rotation, wrapped] : rotations) {
        EXPECT_EQ(wrappedRotation(rotation, 360), wrapped);
    }
    EXPECT_EQ(wrappedRotation(5, 0), 5);
}

TEST(DepthRange, FollowsTheEye) {
    EXPECT_EQ(depthRange(5, 4).near, 0.1);
    EXPECT_EQ(depthRange(5, 4).far, 10.0);
    EXPECT_EQ(depthRange(5, -10).near, 7.5);
    EXPECT_EQ(depthRange(5, -10).far, 125.0);
}

} // namespace
} // namespace orrery
