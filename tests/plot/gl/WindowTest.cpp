// The same drawing in a window.
#include "platform/qt/QtGlSurface.h"
#include "platform/qt/QtTextRasterizer.h"
#include "plot/gl/GlFixture.h"
#include "support/VirtualDisplay.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QImage>
#include <QScreen>
#include <QVBoxLayout>
#include <cstdlib>

namespace orrery::test {
namespace {

/// An application with a window that holds one surface and its view.
struct Window {
    Window() {
        surface = new QtGlSurface;
        auto owned = std::make_unique<OpenGLPlotView>(*surface, rasterizer);
        view = owned.get();
        surface->setClient(std::move(owned));
        surface->setFixedSize(300, 240);
        resetCamera(*view);
        (new QVBoxLayout(&window))->addWidget(surface);
        window.layout()->setContentsMargins(0, 0, 0, 0);
    }
    [[nodiscard]] QImage grabbed() const {
        QCoreApplication::processEvents();
        return surface->grabFramebuffer().convertToFormat(QImage::Format_RGBA8888);
    }

    /// What comes before the application object.
    struct Format {
        Format() { QtGlSurface::setApplicationFormat(BasicOpenGLView::basicPixelFormat()); }
    };

    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    VirtualDisplay display;
    Format format;
    QApplication application{count, arguments};
    BlockRasterizer rasterizer;
    QWidget window;
    QtGlSurface* surface = nullptr; // the window's
    OpenGLPlotView* view = nullptr; // the surface's
};

/// Pixels that differ by more than the roads' rounding.
int differing(const QImage& image, const Pixels& picture) {
    int count = 0;
    for (std::size_t i = 0; i < picture.rgba.size(); ++i) {
        count += std::abs(int{image.constBits()[i]} - int{picture.rgba[i]}) > 24 ? 1 : 0;
    }
    return count;
}

/// Waits until the screen itself shows the picture in the window.
bool onScreen(const QWidget& window, const Pixels& picture) {
    for (const QDeadlineTimer deadline(10'000); !deadline.hasExpired();) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        const QImage shown =
            window.screen()->grabWindow(window.winId()).toImage().convertToFormat(QImage::Format_RGBA8888);
        if (shown.size() == QSize(picture.width, picture.height) && differing(shown, picture) < 300) return true;
    }
    return false;
}

TEST_F(GlTest, AWindowShowsWhatAPictureShowsAlsoInAnotherWindow) {
    const std::array scenes{plate(), curves()};
    const std::array pictures{TestView().frameOf(scenes[0]), TestView().frameOf(scenes[1])}; // gone before the window
    Window window;
    scenes[0].show(*window.view); // before it is shown
    window.window.show();
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        scenes.at(i).show(*window.view);
        const Pixels& wanted = pictures.at(i);
        EXPECT_TRUE(onScreen(window.window, wanted));
        window.window.hide();
        window.window.show();
        EXPECT_TRUE(onScreen(window.window, wanted)) << "hidden and shown";
    }
    QWidget other;
    other.setFixedSize(300, 240);
    window.surface->setParent(&other);
    other.show();
    window.surface->show();
    EXPECT_TRUE(onScreen(other, pictures.back())) << "moved";
    window.surface->setParent(&window.window);
}

TEST_F(GlTest, AWindowOnADenseScreenHasItsDevicePixels) {
    TestView dense(600, 480);
    dense.surface.density = 2;
    const Pixels wanted = dense.frameOf(plate());
    dense.surface.loseContext(); // none of these may be current beside a window's
    ::setenv("QT_SCALE_FACTOR", "2", 1);
    {
        Window window;
        plate().show(*window.view);
        window.window.show();
        const QImage shown = window.grabbed();
        EXPECT_EQ(shown.size(), QSize(600, 480));
        EXPECT_EQ(window.view->camera().viewWidth, 600);
        EXPECT_LT(differing(shown, wanted), 1200);
    }
    ::unsetenv("QT_SCALE_FACTOR");
}

} // namespace
} // namespace orrery::test
