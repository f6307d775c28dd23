// A display without OpenGL: a word of why, and everything but the picture.
#include "app/WindowFixture.h"
#include "plot/OpenGLPlotView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <cstdlib>

namespace orrery::test {
namespace {

/// Before the application object is made.
struct NoOpenGl {
    NoOpenGl() { ::setenv("QT_XCB_GL_INTEGRATION", "none", 1); }
};

class PlotWithoutOpenGlTest : NoOpenGl, public WindowTest {};

TEST_F(PlotWithoutOpenGlTest, TellsWhyAndKeepsEveryCommandWorking) {
    DocumentWindow& window = open("crop-one-stepper.orrery");
    action(window, "actionShowPlot").trigger();
    EXPECT_TRUE(waitFor([&] {
        const auto* reason = window.findChild<QLabel*>("noOpenGL");
        return reason != nullptr && reason->isVisible();
    }));
    EXPECT_TRUE(find<QWidget>(window, "glView").isHidden());
    run(window);
    find<QCheckBox>(window, "responseInclude0").click();
    auto& day = find<QComboBox>(window, "sweepRole1");
    QTest::keyClick(&day, Qt::Key_A); // "Axis 1"
    const auto* view = dynamic_cast<OpenGLPlotView*>(window.document().outlets().glView);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->ranges().size(), 1U);
    EXPECT_TRUE(find<QWidget>(window, "plotNoticeRow").isHidden());
    auto& rotation = find<QSlider>(window, "yRotationSlider");
    find<QPushButton>(window, "animate").click();
    EXPECT_TRUE(waitFor([&] { return rotation.value() > 2; }));
}

} // namespace
} // namespace orrery::test
