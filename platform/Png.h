#pragma once

#include "platform/values/Pixels.h"

#include <string>

namespace orrery {

/// The bytes of a PNG file with the picture's colours; alpha is taken as opaque.
/// @throws OrreryError when the picture cannot be encoded (too large)
[[nodiscard]] std::string encodePng(const Pixels& pixels);

} // namespace orrery
