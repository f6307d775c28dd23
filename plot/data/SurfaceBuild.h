#pragma once

#include "plot/data/Heights.h"
#include "plot/data/PlotLayout.h"

#include <cstddef>
#include <functional>
#include <span>

namespace orrery {

/// One surface to be written, and where its first float goes.
struct SurfaceJob {
    Heights heights;
    float* out;
};

/// Position of a grid point on an axis that −1 and +1 bound when `half` is half the number of cells.
[[nodiscard]] inline float axisPosition(std::size_t index, float half) {
    return static_cast<float>(index) / half - 1.0F;
}

/// Writes the surfaces' cells, shared among that many threads; with 0 among as many as pay. Cells do not depend on one
/// another, so the bits are the same for any number. `progress` is called on the calling thread now and then with the
/// part that is done; where it says false the writing stops and false is returned.
bool writeSurfaces(const PlotLayout& layout, std::span<const SurfaceJob> jobs, unsigned threads,
                   const std::function<bool(double)>& progress);

} // namespace orrery
