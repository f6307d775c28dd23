// Ports and rows dragged with a real mouse.
#include "app/SetupWindow.h"

#include <gmock/gmock.h>

#include <QSplitter>

namespace orrery::test {
namespace {

using testing::ElementsAre;

constexpr const char* height = "/Orchard/Weather/height";
constexpr const char* eggsPerDay = "/Orchard/Moth/Egg laying/eggs per degree day";
constexpr const char* spread = "/Orchard/Weather noise/spread";
constexpr const char* delay = "/Orchard/Moth/Eggs/delay";

class DragAndDrop : public SetupWindowTest {
protected:
    void SetUp() override { openSample("insect-two-steppers.orrery"); }
    void drag(QPoint from, QPoint to, const QStringList& last = {}) {
        xdotool(dragArguments(from, to, last));
        QTest::qWait(0);
    }
};

TEST_F(DragAndDrop, APortGoesWhereTheIndicatorShowedAndOnlyToListsThatFit) {
    PortTableView& outputs = table("outputTable");
    PortTableView& inputs = table("inputTable");
    PortTableView& steppers = table("stepperTable");

    drag(nodePoint("Weather/outputs/mean temperature"), rowPoint(outputs, 0));
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Outputs).size() == 1; }));
    drag(nodePoint("Degree days/outputs/warmth"), rowPoint(outputs, 0, 0.1));
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Outputs).size() == 2; }));
    EXPECT_THAT(ports(PortList::Outputs),
                ElementsAre("/Orchard/Degree days/warmth", "/Orchard/Weather/mean temperature"));

    drag(nodePoint("Moth/Eggs/inputs/delay"), rowPoint(inputs, 0)); // on the row: another port for the same entry
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Initializations).front() == delay; }));
    EXPECT_THAT(fieldsOf(PortList::Initializations, "value"), ElementsAre("0"));

    drag(nodePoint("Moth/Eggs/inputs/delay"), rowPoint(steppers, 1, 0.95)); // the lower edge of the last row
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Steppers).size() == 3; }));
    EXPECT_THAT(ports(PortList::Steppers), ElementsAre(height, eggsPerDay, delay));

    int changes = 0;
    window->document().setup().observers().countChanged = [&changes] { ++changes; };
    drag(nodePoint("Moth/Eggs/inputs/delay"), rowPoint(outputs, 0)); // an input
    drag(nodePoint("Weather/outputs/mean temperature"), rowPoint(inputs, 0));
    drag(nodePoint("Weather"), rowPoint(outputs, 0)); // no port
    EXPECT_EQ(ports(PortList::Outputs).size(), 2U);
    EXPECT_THAT(ports(PortList::Initializations), ElementsAre(delay));
    EXPECT_EQ(changes, 0);
    window->document().setup().observers().countChanged = {};
}

TEST_F(DragAndDrop, RowsMoveWithinTheirTableAndOneUndoPutsThemBack) {
    PortTableView& steppers = table("stepperTable");
    drag(rowPoint(steppers, 0), rowPoint(steppers, 2));
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Steppers).front() == eggsPerDay; }));
    EXPECT_THAT(ports(PortList::Steppers), ElementsAre(eggsPerDay, height));
    EXPECT_THAT(window->document().controller(PortList::Steppers).selection(), ElementsAre(1U));
    EXPECT_EQ(action(*window, "actionUndo").text(), "&Undo Move Steppers");

    xdotool({"key", "ctrl+z"});
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Steppers).front() == height; }));

    window->document().setup().addPort(PortList::Steppers, delay);
    window->document().setup().addPort(PortList::Steppers, spread);
    window->document().controller(PortList::Steppers).setSelection({0, 2});
    steppers.selectRows({0, 2});
    find<QSplitter>(*window, "listSplitter").setSizes({1, 1, 1000});
    drag(rowPoint(steppers, 2), rowPoint(steppers, 3, 0.9));
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Steppers).front() == eggsPerDay; }));
    EXPECT_THAT(ports(PortList::Steppers), ElementsAre(eggsPerDay, spread, height, delay));
    EXPECT_THAT(window->document().controller(PortList::Steppers).selection(), ElementsAre(2U, 3U));

    drag(rowPoint(steppers, 0), rowPoint(table("inputTable"), 0)); // a row of another list
    EXPECT_THAT(ports(PortList::Initializations), ElementsAre(spread));
    EXPECT_EQ(ports(PortList::Steppers).size(), 4U);
}

TEST_F(DragAndDrop, EscapeEndsADragWithoutAChange) {
    PortTableView& steppers = table("stepperTable");
    drag(rowPoint(steppers, 0), rowPoint(steppers, 1, 0.9), {"key", "Escape", "sleep", "0.1"});
    drag(nodePoint("Moth/Eggs/inputs/delay"), rowPoint(steppers, 0), {"key", "Escape", "sleep", "0.1"});
    EXPECT_THAT(ports(PortList::Steppers), ElementsAre(height, eggsPerDay));
    EXPECT_FALSE(window->document().setup().canUndo());
    const QImage before = steppers.grab().toImage();
    steppers.viewport()->repaint();
    EXPECT_EQ(before, steppers.grab().toImage());
}

TEST_F(DragAndDrop, OfSeveralSelectedPortsTheFirstShownIsDragged) {
    clickAt(nodePoint("Moth/Eggs/inputs/delay"));
    clickAt(nodePoint("Moth/Eggs/inputs/inflow"), {"keydown", "ctrl", "click", "1", "keyup", "ctrl"});
    ASSERT_TRUE(waitFor([&] { return outline().selectedNodes().size() == 2; }));
    drag(nodePoint("Moth/Eggs/inputs/delay"), rowPoint(table("inputTable"), 1));
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Initializations).size() == 2; }));
    EXPECT_EQ(ports(PortList::Initializations).back(), "/Orchard/Moth/Eggs/inflow");

    // What lies in a collapsed group is not seen, so it is not taken, nor does it stand before what is.
    outline().setCurrentIndex(showNode("Moth/Eggs/inputs/inflow"));
    const QModelIndex seen = showNode("Weather/outputs/mean temperature");
    outline().selectionModel()->select(seen, QItemSelectionModel::Select);
    outline().collapse(showNode("Moth"));
    ASSERT_TRUE(waitFor([&] { return action(*window, "actionAddToOutputs").isEnabled(); }));
    drag(nodePoint("Weather/outputs/mean temperature"), rowPoint(table("outputTable"), 0));
    ASSERT_TRUE(waitFor([&] { return ports(PortList::Outputs).size() == 1; }));
    outline().selectionModel()->select(seen, QItemSelectionModel::Deselect);
    action(*window, "actionAddToInitializations").trigger();
    EXPECT_EQ(ports(PortList::Initializations).size(), 2U);
}

} // namespace
} // namespace orrery::test
