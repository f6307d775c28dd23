#include "platform/qt/QtGlSurface.h"

#include "platform/Log.h"

#include <QOpenGLFunctions>
#include <QPainter>
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

/// Why the context does not do, in words for the user; empty when it does.
std::string whyUnusable(const QOpenGLContext& context) {
    if (!context.isValid()) return "This display has no OpenGL, which is needed to draw plots.";
    const QSurfaceFormat got = context.format();
    if (got.renderableType() == QSurfaceFormat::OpenGLES || got.version() < qMakePair(2, 1)) {
        return "This display has no OpenGL 2.1, which is needed to draw plots.";
    }
    return {};
}

std::unique_ptr<QOpenGLFramebufferObject> makeFrame(QSize size) {
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::CombinedDepthStencil);
    format.setInternalTextureFormat(GL_RGB8); // read back, its alpha is 1
    return std::make_unique<QOpenGLFramebufferObject>(size, format);
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
}

QtGlSurface::QtGlSurface(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QtGlSurface::~QtGlSurface() {
    (void)QtGlSurface::makeCurrent();
    m_client.reset();
    m_frame.reset();
    if (m_context) m_context->doneCurrent();
}

void QtGlSurface::setClient(std::unique_ptr<GlSurfaceClient> client) {
    const bool current = makeCurrent();
    m_client = std::move(client);
    if (current && m_client) {
        guarded([this] { m_client->prepareOpenGL(); });
        markForDisplay();
    }
}

bool QtGlSurface::makeCurrent() {
    return m_context && m_frame && m_context->makeCurrent(&m_surface) && m_frame->bind();
}

QSize QtGlSurface::pixelSize() const {
    return size() * devicePixelRatioF();
}

SurfaceBounds QtGlSurface::bounds() const {
    const QSize pixels = pixelSize();
    return {static_cast<double>(pixels.width()), static_cast<double>(pixels.height())};
}

void QtGlSurface::markForDisplay() {
    m_isStale = true;
    update();
}

QImage QtGlSurface::grabFramebuffer() {
    drawFrame();
    return m_picture;
}

void QtGlSurface::paintEvent(QPaintEvent* /*event*/) {
    if (m_isStale || m_picture.size() != pixelSize()) drawFrame();
    QPainter painter(this);
    if (m_picture.isNull()) painter.fillRect(rect(), palette().window());
    painter.drawImage(0, 0, m_picture);
}

void QtGlSurface::drawFrame() {
    const QSize pixels = pixelSize();
    if (pixels.isEmpty() || !makeContext()) return;
    m_isStale = false;
    if (m_frame->size() != pixels) m_frame = makeFrame(pixels);
    if (!makeCurrent()) return;
    if (m_client) guarded([this] { m_client->drawRect(); });
    if (makeCurrent()) readPicture(); // the client may have had another one current
}

/// Tried once: a display that has no OpenGL gets none while the program runs.
bool QtGlSurface::makeContext() {
    if (std::exchange(m_wasTried, true)) return m_context != nullptr;
    auto context = std::make_unique<QOpenGLContext>();
    (void)context->create();
    if (const std::string reason = whyUnusable(*context); !reason.empty()) {
        m_unavailable(reason);
        return false;
    }
    m_context = std::move(context);
    m_surface.setFormat(m_context->format());
    m_surface.create();
    if (m_context->makeCurrent(&m_surface)) m_frame = makeFrame(pixelSize());
    if (!makeCurrent()) {
        m_frame.reset();
        m_context.reset();
        m_unavailable("This display's OpenGL gives no room to draw plots in.");
        return false;
    }
    if (m_client) guarded([this] { m_client->prepareOpenGL(); });
    return true;
}

/// Rows come from the lowest up.
void QtGlSurface::readPicture() {
    QImage picture(m_frame->size(), QImage::Format_RGB32);
    m_context->functions()->glReadPixels(0, 0, picture.width(), picture.height(), GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV,
                                         picture.bits());
    m_picture = std::move(picture).mirrored();
    m_picture.setDevicePixelRatio(devicePixelRatioF());
}

} // namespace orrery
