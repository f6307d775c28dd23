#pragma once

#include <string>

namespace orrery {

/// Reads one OpenGL error; unless it is 0, logs "Error: %s." with the library's text for it. Returns the code.
unsigned glCheckError();

/// What the current context lacks for our drawing, in words for the user ("OpenGL 2.1 is needed, …"); empty when
/// nothing is missing.
[[nodiscard]] std::string missingGlFeature();

} // namespace orrery
