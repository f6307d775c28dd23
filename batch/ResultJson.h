#pragma once

#include "run/RunResults.h"

namespace orrery {

class JsonWriter;

/// One object; without the data when `summary`.
void writeResults(JsonWriter& json, const RunResults& results, bool summary);

/// A colour as its red, green, blue and alpha.
void writeColor(JsonWriter& json, const Color& color);

} // namespace orrery
