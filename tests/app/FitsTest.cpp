// Windows on small screens, and many of them on one.
#include "app/SetupWindow.h"
#include "app/StartPanel.h"
#include "app/setup/PortCellDelegate.h"
#include "app/widgets/ElidedLabel.h"

#include <gmock/gmock.h>

#include <QScreen>
#include <QStyleOptionViewItem>
#include <QTabWidget>
#include <set>

namespace orrery::test {
namespace {

constexpr QSize halfOfFullHd(960, 540 - 40); // at 200 %, without the title bar

class FitsTest : public SetupWindowTest {};

TEST_F(FitsTest, WindowsAreNotLargerThanASmallScreen) {
    controller->showStartPanelWhenEmpty();
    EXPECT_EQ(controller->startPanel().minimumSizeHint().boundedTo(halfOfFullHd),
              controller->startPanel().minimumSizeHint());
    openSample("insect-two-steppers.orrery");
    run(*window);
    for (int tab : {1, 0}) {
        find<QTabWidget>(*window, "tabView").setCurrentIndex(tab);
        window->resize(halfOfFullHd);
        EXPECT_TRUE(waitFor([&] { return window->size() == halfOfFullHd; })) << tab << ' ' << window->height();
    }
    // What does not fit can be scrolled to, and is when the keyboard goes there.
    auto& steppers = table("stepperTable");
    steppers.setFocus();
    EXPECT_TRUE(waitFor([&] { return !steppers.visibleRegion().isEmpty(); }));
}

TEST_F(FitsTest, NewWindowsStandBesideTheOthersAndWholeOnTheScreen) {
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    std::set<std::pair<int, int>> corners;
    for (int count = 0; count < 12; ++count) {
        DocumentWindow& each = openNew();
        EXPECT_TRUE(waitFor([&] { return screen.contains(each.frameGeometry()); })) << count;
        corners.emplace(each.pos().x(), each.pos().y());
    }
    EXPECT_EQ(corners.size(), 12U);
}

TEST_F(FitsTest, ALongNameKeepsItsOwnPartWhole) {
    ElidedLabel label("/Orchard/Weather in the north/daily mean temperature");
    label.resize(label.fontMetrics().horizontalAdvance("/Orchard/W…/daily mean temperature"), 30);
    ElidedLabel shown("/Orchard/W…/daily mean temperature");
    shown.resize(label.size());
    EXPECT_EQ(label.grab().toImage(), shown.grab().toImage());

    openSample("insect-two-steppers.orrery");
    PortTableView& steppers = table("stepperTable");
    window->document().setup().editEntry(PortList::Steppers, 0, "portPath",
                                         "/Orchard/Moth/Egg laying/eggs per degree day");
    QStyleOptionViewItem option;
    option.initFrom(&steppers);
    option.widget = &steppers;
    option.features = QStyleOptionViewItem::HasDecoration | QStyleOptionViewItem::HasDisplay;
    option.rect = QRect(0, 0, 240, 24);
    struct Delegate : PortCellDelegate {
        using PortCellDelegate::initStyleOption;
    } delegate;
    delegate.initStyleOption(&option, steppers.model()->index(0, 0));
    EXPECT_TRUE(option.text.endsWith("…/eggs per degree day")) << coreText(option.text);
}

} // namespace
} // namespace orrery::test
