#define GL_GLEXT_PROTOTYPES
#include "platform/egl/EglSurface.h"

#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glext.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace orrery {

namespace {

constexpr const char* noGlRemedy = "Install the OpenGL driver for software drawing (Mesa).";

/// The display without a window system; it lasts as long as the program, as contexts come and go.
EGLDisplay surfacelessDisplay() {
    static const EGLDisplay display = [] {
        const EGLDisplay found =
            eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, static_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
        return found != EGL_NO_DISPLAY && eglInitialize(found, nullptr, nullptr) == EGL_TRUE ? found : EGL_NO_DISPLAY;
    }();
    if (display == EGL_NO_DISPLAY) {
        throw OrreryError("OpenGL cannot be used without a window here.", {}, noGlRemedy);
    }
    return display;
}

GLint limitOf(GLenum name) {
    std::array<GLint, 2> values{};
    glGetIntegerv(name, values.data());
    return values[0];
}

/// The bytes of one target: colour and depth for every sample, the resolved picture and its copy.
std::uint64_t bytesNeeded(int width, int height, int samples) {
    const std::uint64_t perPixel = 8U * static_cast<unsigned>(samples) + (samples > 1 ? 4U : 0U) + 4U;
    return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) * perPixel;
}

void checkSize(int width, int height, int samples) {
    const std::string size = fmt::format("A picture of {} x {} pixels", width, height);
    if (width < 1 || height < 1) {
        throw OrreryError(size + " has no area.", {}, "Choose a width and a height of at least 1.");
    }
    const int limit = std::min(limitOf(GL_MAX_RENDERBUFFER_SIZE), limitOf(GL_MAX_VIEWPORT_DIMS));
    if (width > limit || height > limit) {
        throw OrreryError(fmt::format("{} is larger than the OpenGL driver can draw.", size), {},
                          fmt::format("Choose at most {} x {}.", limit, limit));
    }
    const std::uint64_t need = bytesNeeded(width, height, samples);
    const std::uint64_t free = availableMemory();
    if (need > free) {
        throw OrreryError(
            fmt::format("{} would need {} of memory, but only {} are free.", size, sizeText(need), sizeText(free)), {},
            "Choose a smaller size or fewer samples.");
    }
}

} // namespace

struct EglSurface::Context {
    Context() : display(surfacelessDisplay()) {
        eglBindAPI(EGL_OPENGL_API);
        constexpr std::array<EGLint, 3> wanted{EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
        EGLConfig config = EGL_NO_CONFIG_KHR;
        EGLint count = 0;
        eglChooseConfig(display, wanted.data(), &config, 1, &count);
        name = eglCreateContext(display, count > 0 ? config : EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, nullptr);
        if (name == EGL_NO_CONTEXT) {
            throw OrreryError("OpenGL provides no drawing context.", {}, noGlRemedy);
        }
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() {
        if (eglGetCurrentContext() == name) {
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        }
        eglDestroyContext(display, name);
    }
    [[nodiscard]] bool makeCurrent() const {
        eglBindAPI(EGL_OPENGL_API);
        return eglGetCurrentContext() == name ||
               eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, name) == EGL_TRUE;
    }

    EGLDisplay display;
    EGLContext name = EGL_NO_CONTEXT;
};

/// A framebuffer object with colour and depth, and a second one without samples to read from.
struct EglSurface::Target {
    Target(int width, int height, int samples) {
        glGenFramebuffers(2, framebuffers.data());
        glGenRenderbuffers(3, m_renderbuffers.data());
        attach(0, GL_COLOR_ATTACHMENT0, 0, GL_RGBA8, {width, height, samples});
        attach(0, GL_DEPTH_ATTACHMENT, 1, GL_DEPTH_COMPONENT24, {width, height, samples});
        if (samples > 1) {
            attach(1, GL_COLOR_ATTACHMENT0, 2, GL_RGBA8, {width, height, 1});
            readFrom = framebuffers[1];
        } else {
            readFrom = framebuffers[0];
        }
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffers[0]);
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;
    ~Target() {
        glDeleteFramebuffers(2, framebuffers.data());
        glDeleteRenderbuffers(3, m_renderbuffers.data());
    }

    [[nodiscard]] static bool complete() {
        return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE && glGetError() == GL_NO_ERROR;
    }
    void resolve(int width, int height) const {
        if (readFrom == framebuffers[0]) {
            return;
        }
        glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffers[0]);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffers[1]);
        glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffers[0]);
    }

    std::array<GLuint, 2> framebuffers{}; // drawn to; resolved into
    GLuint readFrom = 0;

private:
    struct Storage {
        int width;
        int height;
        int samples;
    };
    void attach(std::size_t framebuffer, GLenum point, std::size_t renderbuffer, GLenum format, Storage storage) const {
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffers.at(framebuffer));
        glBindRenderbuffer(GL_RENDERBUFFER, m_renderbuffers.at(renderbuffer));
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, storage.samples > 1 ? storage.samples : 0, format,
                                         storage.width, storage.height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, point, GL_RENDERBUFFER, m_renderbuffers.at(renderbuffer));
    }

    std::array<GLuint, 3> m_renderbuffers{}; // colour, depth, resolved colour
};

EglSurface::EglSurface(int width, int height, int samples) : m_width(width), m_height(height), m_samples(samples) {
    recreateContext();
}

EglSurface::~EglSurface() {
    loseContext();
}

bool EglSurface::makeCurrent() {
    if (!m_context || !m_context->makeCurrent()) {
        return false;
    }
    if (m_target) {
        glBindFramebuffer(GL_FRAMEBUFFER, m_target->framebuffers[0]);
    }
    return true;
}

SurfaceBounds EglSurface::bounds() const {
    return {static_cast<double>(m_width), static_cast<double>(m_height)};
}

void EglSurface::flushBuffer() {
    if (makeCurrent()) {
        m_target->resolve(m_width, m_height);
    }
    glFlush();
}

void EglSurface::resize(int width, int height) {
    if (!m_context) {
        return;
    }
    m_width = width;
    m_height = height;
    makeTarget();
}

Pixels EglSurface::readPixels() {
    Pixels pixels{m_width, m_height, {}};
    if (!makeCurrent()) {
        return pixels;
    }
    const std::size_t row = static_cast<std::size_t>(m_width) * 4;
    pixels.rgba.resize(row * static_cast<std::size_t>(m_height));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_target->readFrom);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, m_width, m_height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.rgba.data());
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_target->framebuffers[0]);
    for (auto top = pixels.rgba.begin(), bottom = pixels.rgba.end();
         bottom - top >= 2 * static_cast<std::ptrdiff_t>(row);
         top += static_cast<std::ptrdiff_t>(row)) { // OpenGL's first row is the lowest
        bottom -= static_cast<std::ptrdiff_t>(row);
        std::swap_ranges(top, top + static_cast<std::ptrdiff_t>(row), bottom);
    }
    return pixels;
}

void EglSurface::loseContext() {
    if (m_context && m_context->makeCurrent()) {
        m_target.reset();
    } // a target is deleted in its own context
    m_context.reset();
}

void EglSurface::recreateContext() {
    loseContext();
    m_context = std::make_unique<Context>();
    makeTarget();
}

void EglSurface::makeTarget() {
    if (!m_context->makeCurrent()) {
        throw OrreryError("OpenGL provides no drawing context.", {}, noGlRemedy);
    }
    checkSize(m_width, m_height, std::max(m_samples, 1));
    const int limit = std::max(limitOf(GL_MAX_SAMPLES), 1);
    if (m_samples > limit) {
        logLine(fmt::format("The OpenGL driver has {} samples per pixel, not {}.", limit, m_samples));
        m_samples = limit;
    }
    m_target.reset();
    m_target = std::make_unique<Target>(m_width, m_height, m_samples);
    if (!Target::complete()) {
        throw OrreryError(fmt::format("OpenGL cannot make a picture of {} x {} pixels.", m_width, m_height), {},
                          "Choose a smaller size or fewer samples.");
    }
}

} // namespace orrery
