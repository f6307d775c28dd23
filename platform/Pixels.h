#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orrery {

/// A picture: red, green, blue, alpha per pixel, rows from the top, packed without padding.
struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba; // width × height × 4
};

/// The bytes of a PNG file with the picture's colours; alpha is taken as opaque.
/// @throws OrreryError when the picture cannot be encoded (too large)
[[nodiscard]] std::string encodePng(const Pixels& pixels);

} // namespace orrery
