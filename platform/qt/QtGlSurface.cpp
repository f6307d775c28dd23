#include "platform/qt/QtGlSurface.h"

#include "platform/Log.h"

#include <QOpenGLContext>
#include <QSurfaceFormat>
#include <exception>
#include <utility>

namespace orrery {

namespace {

/// Qt calls back from C code that no exception may cross.
template <typename Call>
void guarded(Call call) {
    try {
        call();
    } catch (const std::exception& error) {
        logLine(error.what());
    }
}

} // namespace

void QtGlSurface::setApplicationFormat(const GlPixelFormat& format) {
    QSurfaceFormat wanted;
    wanted.setRenderableType(QSurfaceFormat::OpenGL); // not the embedded variant, which has no fixed functions
    wanted.setVersion(2, 1);
    wanted.setProfile(QSurfaceFormat::CompatibilityProfile);
    wanted.setSwapBehavior(format.doubleBuffer ? QSurfaceFormat::DoubleBuffer : QSurfaceFormat::SingleBuffer);
    wanted.setDepthBufferSize(format.depthSize);
    wanted.setSwapInterval(1);
    QSurfaceFormat::setDefaultFormat(wanted);
    // Contexts are not shared between windows: with that, Qt 6.4 leaves a surface black that moved to another window.
}

std::string QtGlSurface::whyUnavailable() {
    QOpenGLContext context;
    if (!context.create()) {
        return "This display has no OpenGL, which is needed to draw plots.";
    }
    const QSurfaceFormat got = context.format();
    if (got.renderableType() == QSurfaceFormat::OpenGLES || got.version() < qMakePair(2, 1)) {
        return "This display has no OpenGL 2.1, which is needed to draw plots.";
    }
    return {};
}

QtGlSurface::QtGlSurface(QWidget* parent) : QOpenGLWidget(parent) {}

QtGlSurface::~QtGlSurface() {
    disconnect(m_contextGoes); // the base's end destroys the context, when this is no longer a surface
    if (isValid()) {
        QOpenGLWidget::makeCurrent();
    }
    m_client.reset();
    doneCurrent();
}

void QtGlSurface::setClient(std::unique_ptr<GlSurfaceClient> client) {
    const bool current = makeCurrent();
    m_client = std::move(client);
    if (current && m_client) {
        guarded([this] { m_client->prepareOpenGL(); });
        update();
    }
}

bool QtGlSurface::makeCurrent() {
    if (!isValid()) { // not shown yet
        return false;
    }
    QOpenGLWidget::makeCurrent();
    return QOpenGLContext::currentContext() == context();
}

SurfaceBounds QtGlSurface::bounds() const {
    const QSize pixels = size() * devicePixelRatioF(); // rounded as the framebuffer's size is
    return {static_cast<double>(pixels.width()), static_cast<double>(pixels.height())};
}

void QtGlSurface::initializeGL() {
    m_contextGoes = connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &QtGlSurface::releaseContext);
    if (m_client) {
        guarded([this] { m_client->prepareOpenGL(); });
    }
}

void QtGlSurface::paintGL() {
    if (m_client) {
        guarded([this] { m_client->drawRect(); });
    }
}

void QtGlSurface::releaseContext() {
    if (m_client && makeCurrent()) {
        guarded([this] { m_client->releaseContext(); });
        doneCurrent();
    }
}

} // namespace orrery
