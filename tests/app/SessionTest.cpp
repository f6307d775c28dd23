// A whole session at the window: what a scientist does from the sample to the plot.
#include "app/WindowFixture.h"

#include <QPushButton>

namespace orrery::test {
namespace {

using SessionTest = WindowTest;

TEST_F(SessionTest, TheStartButtonRunsASampleToItsResults) {
    DocumentWindow& window = open("crop-two-steppers.orrery");
    auto& button = find<QPushButton>(window, "startStopButton");
    xdotool({"mousemove", QString::number(centreOnScreen(button).x()), QString::number(centreOnScreen(button).y()),
             "click", "1"});
    ASSERT_TRUE(waitFor([&] { return window.document().runControl().resultsBuilt(); }));
    EXPECT_FALSE(button.isChecked());
    EXPECT_GT(window.document().nRowsOfData(), 0U);
}

} // namespace
} // namespace orrery::test
