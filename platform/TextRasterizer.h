#pragma once

#include "platform/values/Pixels.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace orrery {

/// How a text is set.
struct TextAttributes {
    std::string font;                         // family; a close one stands in where it is not installed
    double size = 0;                          // pixels
    std::array<std::uint8_t, 3> foreground{}; // red, green, blue
    friend bool operator==(const TextAttributes&, const TextAttributes&) = default;
};

/// Turns text into pictures. Main thread.
class TextRasterizer {
public:
    virtual ~TextRasterizer() = default;
    /// One line of UTF-8 text on opaque black, as large as the text measures and without a margin; every alpha is 255.
    /// A text wider than `maxWidth` pixels is shortened in the middle, what is after its last slash kept whole where
    /// that fits. Control characters are shown as blanks.
    [[nodiscard]] virtual Pixels rasterize(std::string_view text, const TextAttributes& attributes, int maxWidth) = 0;
};

} // namespace orrery
