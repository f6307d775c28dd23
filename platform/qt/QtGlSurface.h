#pragma once

#include "platform/GlSurface.h"

#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>

namespace orrery {

/// A drawing surface in a window: a widget like any other, which shows the picture that was drawn off screen. Its
/// context is made for its first frame; bounds are device pixels, on dense screens, too.
///
/// The window stays one without OpenGL, so that it comes up without waiting for a driver, is not made anew when the
/// surface is first seen, and repaints a cursor that blinks beside the surface without a frame.
class QtGlSurface : public QWidget, public GlSurface {
    Q_OBJECT

public:
    /// Has every surface ask for OpenGL 2.1 with the fixed functions. To be called before the application object is
    /// made.
    static void setApplicationFormat(const GlPixelFormat& format);

    explicit QtGlSurface(QWidget* parent = nullptr);
    /// The client goes first, with the context current.
    ~QtGlSurface() override;

    /// What draws here. Prepared at once when there is a context already.
    void setClient(std::unique_ptr<GlSurfaceClient> client);
    /// Called once, from the first frame, where this display has no OpenGL that would do; with the reason in words for
    /// the user.
    void setUnavailableHandler(std::function<void(const std::string&)> handler) { m_unavailable = std::move(handler); }
    /// A frame drawn now, in device pixels; null where there is no OpenGL.
    [[nodiscard]] QImage grabFramebuffer();

    [[nodiscard]] bool makeCurrent() override;
    [[nodiscard]] SurfaceBounds bounds() const override;
    [[nodiscard]] double scale() const override { return devicePixelRatioF(); }
    void markForDisplay() override;
    void setSwapInterval(int) override {} // nothing is swapped
    void flushBuffer() override {}        // the widget's painting shows the frame

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QSize pixelSize() const;
    [[nodiscard]] bool makeContext();
    void drawFrame();
    void readPicture();

    std::unique_ptr<GlSurfaceClient> m_client;
    std::function<void(const std::string&)> m_unavailable = [](const std::string&) {};
    QOffscreenSurface m_surface;
    std::unique_ptr<QOpenGLContext> m_context; // none before the first frame, and where there is no OpenGL
    std::unique_ptr<QOpenGLFramebufferObject> m_frame;
    QImage m_picture; // what the frame showed when it was drawn last
    bool m_wasTried = false;
    bool m_isStale = true;
};

} // namespace orrery
