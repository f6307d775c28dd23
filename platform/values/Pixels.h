#pragma once

#include <cstdint>
#include <vector>

namespace orrery {

/// A picture: red, green, blue, alpha per pixel, rows from the top, packed without padding.
struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgba; // width × height × 4
};

} // namespace orrery
