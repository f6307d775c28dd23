#include "plot/GlCheck.h"

#include "platform/Log.h"
#include "platform/Numbers.h"
#include "plot/Gl.h"

#include <string_view>

namespace orrery {

namespace {

std::string textOf(const GLubyte* text) {
    return text == nullptr ? "unknown" : reinterpret_cast<const char*>(text);
}

} // namespace

unsigned glCheckError() {
    const GLenum code = glGetError();
    if (code != GL_NO_ERROR) {
        logLine("Error: " + textOf(gluErrorString(code)) + ".");
    }
    return code;
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
