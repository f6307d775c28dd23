#include "app/WindowFixture.h"
#include "platform/qt/QtWaitPanel.h"

#include <QProgressDialog>
#include <QPushButton>

namespace orrery::test {
namespace {

using WaitPanelTest = WindowTest;

TEST_F(WaitPanelTest, ALongWaitShowsItselfTakesCancelAndLetsNothingElseIn) {
    DocumentWindow& window = openNew();
    int ticks = 0;
    const auto timer = services->runLoop().repeat(std::chrono::milliseconds(1), [&ticks] { ++ticks; });
    ASSERT_TRUE(waitFor([&] { return ticks > 0; }));
    QtWaitPanel panel(&window);
    panel.begin("Reading");
    EXPECT_EQ(window.findChild<QProgressDialog*>("waitPanel"), nullptr) << "a short wait shows nothing";
    const int ticksBefore = ticks;
    bool goesOn = true;
    for (const QDeadlineTimer deadline(20'000); goesOn && !deadline.hasExpired();) {
        goesOn = panel.update(0.5);
        if (auto* shown = window.findChild<QProgressDialog*>("waitPanel")) {
            QTest::mouseClick(&window, Qt::LeftButton); // blocked by the panel
            QTest::mouseClick(shown->findChild<QPushButton*>(), Qt::LeftButton);
        }
    }
    EXPECT_FALSE(goesOn);
    EXPECT_EQ(ticks, ticksBefore);
    panel.end();
    EXPECT_TRUE(waitFor([&] { return ticks > ticksBefore; }));
    EXPECT_EQ(window.findChild<QProgressDialog*>("waitPanel"), nullptr);
}

} // namespace
} // namespace orrery::test
