#pragma once

#include "platform/TextRasterizer.h"
#include "plot/GlObjects.h"

#include <limits>
#include <string>

namespace orrery {

/// A text drawn once into a rectangle texture and shown as a quad of its own pixel size whose lower left corner stands
/// at a point of the scene, upright under any camera. Made, drawn and destroyed while its view's context is current.
class TextureString {
public:
    struct Size {
        double width = 0;
        double height = 0;
    };

    TextureString(TextRasterizer& rasterizer, const std::string& string, const TextAttributes& attributes);

    /// Replaces text, size and texture. A text too wide for a rectangle texture, or for the room, is shortened in the
    /// middle.
    void genTextureFor(TextRasterizer& rasterizer, const std::string& string, const TextAttributes& attributes,
                       int room = std::numeric_limits<int>::max());
    /// Pixels from the window position of the scene point to the right edge of the window; 0 for a point beside it.
    [[nodiscard]] static int roomAt(float x, float y, float z);
    /// Has the text made so wide as there is room for; a text that fits is made once. No room leaves it as it is.
    void fitInto(int room, TextRasterizer& rasterizer, const TextAttributes& attributes);

    /// Draws over what is there at the window position of the scene point (x, y, z); the quad's own depth is z, so a z
    /// outside −1 … 1 shows nothing. All GL state is as before afterwards.
    void drawAtX(float x, float y, float z) const;

    [[nodiscard]] Size texSize() const { return m_texSize; } // pixels
    [[nodiscard]] const std::string& string() const { return m_string; }
    void setString(std::string string) { m_string = std::move(string); } // the texture stays
    [[nodiscard]] unsigned texName() const { return m_texName.get(); }   // 0: nothing to draw
    void forgetTexture() { m_texName.release(); }                        // its context is gone

private:
    [[nodiscard]] GlTexture downloadImageAsTexture(const Pixels& image);

    Size m_texSize;
    double m_wholeWidth = 0; // of the text before it was shortened for the room
    int m_room = 0;          // that the texture was made for
    GlTexture m_texName;
    std::string m_string;
};

} // namespace orrery
