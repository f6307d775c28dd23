#include "plot/TextureString.h"

#include "plot/Gl.h"
#include "plot/GlCheck.h"

#include <algorithm>
#include <array>
#include <optional>

namespace orrery {

namespace {

struct WindowPoint {
    double x = 0;
    double y = 0;
    std::array<GLint, 4> viewport{};
};

/// Where the scene point lies in the window, in pixels from the lower left corner; none for a point in the eye's plane.
std::optional<WindowPoint> project(float x, float y, float z) {
    std::array<GLdouble, 16> modelView{};
    std::array<GLdouble, 16> projection{};
    WindowPoint point;
    double depth = 0;
    glGetDoublev(GL_MODELVIEW_MATRIX, modelView.data());
    glGetDoublev(GL_PROJECTION_MATRIX, projection.data());
    glGetIntegerv(GL_VIEWPORT, point.viewport.data());
    const GLint projected =
        gluProject(static_cast<double>(x), static_cast<double>(y), static_cast<double>(z), modelView.data(),
                   projection.data(), point.viewport.data(), &point.x, &point.y, &depth);
    if (projected == GL_FALSE || point.viewport[2] <= 0 || point.viewport[3] <= 0) {
        return std::nullopt;
    }
    return point;
}

/// Makes window pixels the coordinates of drawing, (0, 0) at the lower left corner.
void scaleToPixels(const std::array<GLint, 4>& viewport) {
    const auto width = static_cast<float>(viewport[2]);
    const auto height = static_cast<float>(viewport[3]);
    glScalef(2.0F / width, 2.0F / height, 1.0F);
    glTranslatef(-width / 2.0F, -height / 2.0F, 0.0F);
}

/// The quad with its lower left corner at (x, y); a rectangle texture is addressed in texels, its first row on top.
void drawQuad(double x, double y, float z, TextureString::Size size) {
    const auto depth = static_cast<double>(z);
    glBegin(GL_QUADS);
    glTexCoord2d(0, size.height);
    glVertex3d(x, y, depth);
    glTexCoord2d(0, 0);
    glVertex3d(x, y + size.height, depth);
    glTexCoord2d(size.width, 0);
    glVertex3d(x + size.width, y + size.height, depth);
    glTexCoord2d(size.width, size.height);
    glVertex3d(x + size.width, y, depth);
    glEnd();
}

} // namespace

TextureString::TextureString(TextRasterizer& rasterizer, const std::string& string, const TextAttributes& attributes) {
    genTextureFor(rasterizer, string, attributes);
}

void TextureString::genTextureFor(TextRasterizer& rasterizer, const std::string& string,
                                  const TextAttributes& attributes, int room) {
    m_string = string;
    m_room = room;
    GLint limit = 0;
    glGetIntegerv(GL_MAX_RECTANGLE_TEXTURE_SIZE_ARB, &limit);
    const Pixels image = rasterizer.rasterize(string, attributes, std::min(limit, room));
    m_texSize = {static_cast<double>(image.width), static_cast<double>(image.height)};
    if (room == std::numeric_limits<int>::max()) m_wholeWidth = m_texSize.width;
    m_texName.reset();
    m_texName = downloadImageAsTexture(image);
}

int TextureString::roomAt(float x, float y, float z) {
    const std::optional<WindowPoint> point = project(x, y, z);
    if (!point || point->x < 0) return 0;
    return std::max(0, static_cast<int>(static_cast<double>(point->viewport[2]) - point->x));
}

void TextureString::fitInto(int room, TextRasterizer& rasterizer, const TextAttributes& attributes) {
    if (room == 0) return;
    const int needed = m_wholeWidth <= room ? std::numeric_limits<int>::max() : room;
    if (needed != m_room) genTextureFor(rasterizer, std::string(m_string), attributes, needed);
}

GlTexture TextureString::downloadImageAsTexture(const Pixels& image) {
    if (image.rgba.empty()) {
        return {};
    }
    glEnable(GL_TEXTURE_RECTANGLE_ARB);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, image.width);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    GLuint name = 0;
    glGenTextures(1, &name);
    GlTexture texture(name);
    glBindTexture(GL_TEXTURE_RECTANGLE_ARB, name);
    glTexParameteri(GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_RECTANGLE_ARB, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    // Bytes in memory order on either kind of machine; on a little-endian one GL_UNSIGNED_INT_8_8_8_8_REV is the same.
    glTexImage2D(GL_TEXTURE_RECTANGLE_ARB, 0, GL_RGBA, image.width, image.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 image.rgba.data());
    glBindTexture(GL_TEXTURE_RECTANGLE_ARB, 0);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glDisable(GL_TEXTURE_RECTANGLE_ARB);
    return texture;
}

void TextureString::drawAtX(float x, float y, float z) const {
    if (!m_texName) {
        return;
    }
    const std::optional<WindowPoint> point = project(x, y, z);
    if (!point) {
        return;
    }
    {
        const IdentityMatrices matrices;
        scaleToPixels(point->viewport);
        // The current colour is part of the state put back, too.
        const SavedAttributes saved(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT | GL_TEXTURE_BIT | GL_CURRENT_BIT);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_BLEND);
        glEnable(GL_TEXTURE_RECTANGLE_ARB);
        glBindTexture(GL_TEXTURE_RECTANGLE_ARB, m_texName.get());
        glColor3f(0.0F, 1.0F, 0.0F);
        drawQuad(point->x, point->y, z, m_texSize);
    }
    glCheckError();
}

} // namespace orrery
