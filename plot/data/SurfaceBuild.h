#pragma once

#include "plot/data/Heights.h"
#include "plot/data/PlotLayout.h"
#include "plot/data/VertexPieces.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace orrery {

/// One curve or surface to be written, and the plot's vertex that it begins with.
struct SurfaceJob {
    Heights heights;
    std::uint64_t firstVertex;
};

/// Position of a grid point on an axis that −1 and +1 bound when `half` is half the number of cells.
[[nodiscard]] inline float axisPosition(std::size_t index, float half) {
    return static_cast<float>(index) / half - 1.0F;
}

/// Writes the surfaces' cells into the pieces, shared among that many threads; with 0 among as many as pay. Cells do
/// not depend on one another, so the bits are the same for any number. `progress` is called on the calling thread now
/// and then with the part that is done; where it says false the writing stops and false is returned.
bool writeSurfaces(const PlotLayout& layout, std::span<const SurfaceJob> jobs, std::span<const VertexPiece> pieces,
                   unsigned threads, const std::function<bool(double)>& progress);

} // namespace orrery
