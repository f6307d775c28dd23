#pragma once

#include "platform/GlSurface.h"

#include <QOpenGLWidget>
#include <memory>
#include <string>

namespace orrery {

/// A drawing surface in a window. Qt draws it into a framebuffer of its own and shows that with the window, at the
/// display's refresh; bounds are device pixels, on dense screens, too.
class QtGlSurface : public QOpenGLWidget, public GlSurface {
    Q_OBJECT

public:
    /// Has every surface and window ask for OpenGL 2.1 with the fixed functions. To be called before the application
    /// object is made.
    static void setApplicationFormat(const GlPixelFormat& format);
    /// Why no surface can work on this display, in words for the user; empty when one can. Needs the application
    /// object.
    [[nodiscard]] static std::string whyUnavailable();

    explicit QtGlSurface(QWidget* parent = nullptr);
    /// The client goes first, with the context current.
    ~QtGlSurface() override;

    /// What draws here. Prepared at once when there is a context already.
    void setClient(std::unique_ptr<GlSurfaceClient> client);

    [[nodiscard]] bool makeCurrent() override;
    [[nodiscard]] SurfaceBounds bounds() const override;
    [[nodiscard]] double scale() const override { return devicePixelRatioF(); }
    void markForDisplay() override { update(); }
    void setSwapInterval(int) override {} // a window's swaps are set with the application's format
    void flushBuffer() override {}        // Qt shows the frame with the window

protected:
    void initializeGL() override;
    void paintGL() override;

private:
    void releaseContext();

    std::unique_ptr<GlSurfaceClient> m_client;
    QMetaObject::Connection m_contextGoes;
};

} // namespace orrery
