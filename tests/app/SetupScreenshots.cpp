// Pictures of the setup tab while it is worked with.
#include "app/Screenshot.h"
#include "app/SetupWindow.h"

#include <QMenu>
#include <QTimer>

namespace orrery::test {
namespace {

class SetupScreenshots : public SetupWindowTest {
protected:
    void SetUp() override { openSample("insect-two-steppers.orrery"); }

    /// The screen while a port or a row is above its goal.
    void saveDrag(const std::string& name, QPoint from, QPoint to) {
        QTimer::singleShot(1000, window, [name] { saveScreenshot(name); });
        xdotool(dragArguments(from, to, {"sleep", "1.5", "key", "Escape", "sleep", "0.1"}));
    }
};

TEST_F(SetupScreenshots, Drags) {
    saveDrag("drag-onto-empty-table", nodePoint("Weather/outputs/mean temperature"), rowPoint(table("outputTable"), 0));
    saveDrag("drag-onto-row", nodePoint("Moth/Eggs/inputs/delay"), rowPoint(table("stepperTable"), 0));
    saveDrag("drag-between-rows", rowPoint(table("stepperTable"), 0), rowPoint(table("stepperTable"), 1, 0.9));
}

TEST_F(SetupScreenshots, FaultsFilterAndMenu) {
    window->document().addOrRemoveOutput(0);
    window->document().editEntry(PortList::Steppers, 0, "portPath", "/Orchard/Weather/heigth");
    window->document().editEntry(PortList::Steppers, 1, "step", "0");
    field("modelFilter").setText("eggs");
    saveScreenshot("setup-faults");
    outline().setCurrentIndex(showNode("Moth/Egg laying/inputs/eggs per degree day"));
    auto& menu = find<QMenu>(*window, "menuSetup");
    menu.popup(onScreen(*window, QPoint(130, 30)));
    saveScreenshot("setup-menu");
    menu.close();
}

TEST_F(SetupScreenshots, RefusedNumberAndToolTip) {
    PortTableView& steppers = table("stepperTable");
    steppers.setFocus();
    steppers.setCurrentIndex(steppers.model()->index(0, 2));
    xdotool({"key", "Return", "type", "12abc"});
    xdotool({"key", "Return"});
    saveScreenshot("cell-refused");
    const QPoint node = nodePoint("Moth/Eggs/inputs/delay");
    xdotool({"mousemove", QString::number(node.x()), QString::number(node.y()), "sleep", "1.5"});
    saveScreenshot("node-tooltip");
}

} // namespace
} // namespace orrery::test
