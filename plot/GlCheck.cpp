#include "plot/GlCheck.h"

#include "platform/Log.h"
#include "platform/values/Numbers.h"
#include "plot/Gl.h"

#include <string_view>
#include <utility>

namespace orrery {

namespace {

const GlErrorWatch* innermost = nullptr;

std::string textOf(const GLubyte* text) {
    return text == nullptr ? "unknown" : reinterpret_cast<const char*>(text);
}

} // namespace

unsigned glCheckError() {
    const GLenum code = glGetError();
    if (code != GL_NO_ERROR) {
        const std::string text = textOf(gluErrorString(code));
        logLine("Error: " + text + ".");
        if (innermost != nullptr) {
            innermost->hear(text);
        }
    }
    return code;
}

GlErrorWatch::GlErrorWatch(std::string& first) : m_first(first), m_outer(std::exchange(innermost, this)) {}

GlErrorWatch::~GlErrorWatch() {
    innermost = m_outer;
}

void GlErrorWatch::hear(const std::string& text) const {
    for (const GlErrorWatch* watch = this; watch != nullptr; watch = watch->m_outer) {
        if (watch->m_first.empty()) {
            watch->m_first = text;
        }
    }
}

std::string missingGlFeature() {
    const std::string version = textOf(glGetString(GL_VERSION));
    const std::string have = " This machine offers OpenGL " + version + " (" + textOf(glGetString(GL_RENDERER)) + ").";
    if (floatValue(version) < 2.1F) {
        return "OpenGL 2.1 is needed to draw plots." + have;
    }
    const std::string extensions = " " + textOf(glGetString(GL_EXTENSIONS)) + " ";
    for (const std::string_view name : {"GL_ARB_texture_rectangle", "GL_NV_texture_rectangle"}) {
        if (extensions.find(" " + std::string(name) + " ") != std::string::npos) {
            return {};
        }
    }
    return "OpenGL with rectangle textures is needed to draw plots." + have;
}

} // namespace orrery
