#pragma once

#include <cstddef>

namespace orrery {

/// The cells of a surface between two neighbouring grid lines of x. Nothing is owned; the arrays run along z and hold
/// one value more than there are cells.
struct SurfaceStrip {
    float x0 = 0;
    float x1 = 0;
    const float* z = nullptr;
    const float* y0 = nullptr; // heights at x0
    const float* y1 = nullptr; // heights at x1
};

inline constexpr std::size_t verticesPerCell = 6;
/// Of a normal and a position for each vertex.
inline constexpr std::size_t floatsPerCell = 36;

/// Writes the cells' two triangles each, with flat normals. A normal without a finite direction points up.
/// With `streamed` the floats go past the caches to memory, which pays when they are more than the caches hold; call
/// finishStreaming() on the same thread before another one reads them.
void writeStrip(const SurfaceStrip& strip, std::size_t cells, bool streamed, float* out);
void finishStreaming();

/// The same one cell after the other, to the same bits: for processors without SSE, and as the measure of the above.
void writeStripPlainly(const SurfaceStrip& strip, std::size_t cells, float* out);

} // namespace orrery
