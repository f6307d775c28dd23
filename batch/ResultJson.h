#pragma once

#include "run/ResponseVariable.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orrery {

class JsonWriter;

/// Results as they are printed, wherever they are kept. Nothing is owned.
struct ResultView {
    const std::vector<std::string>& labels;
    std::span<const ResponseVariable> responses;
    std::uint32_t nRowsOfData;
    std::span<const float> maxima;
    std::span<const float> cells;
};

/// One object; without the data when `summary`.
void writeResults(JsonWriter& json, const ResultView& results, bool summary);

/// A colour as its red, green, blue and alpha.
void writeColor(JsonWriter& json, const Color& color);

} // namespace orrery
