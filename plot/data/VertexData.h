#pragma once

#include "plot/data/PlotLayout.h"
#include "plot/data/PlotView.h"
#include "run/ResponseVariable.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orrery {

/// The result rows that a plot draws. Nothing is owned.
struct PlotSource {
    std::span<const float> cells;                // the simulation data, row-major, one column per response variable
    std::span<const float> maxima;               // per column
    std::span<const ResponseVariable> responses; // one per column, included or not
    std::span<const std::uint32_t> rows;         // the current index set, ascending
};

/// The value that the plot's full height stands for: the largest maximum of the included columns. Where that is not
/// positive, the largest absolute value of the included columns over all rows, or 1 when that is 0. Values that are not
/// finite take no part.
[[nodiscard]] float overallMaximum(const PlotSource& source);

/// Curves: x, y, z = 0 per vertex, one polyline of xEdges vertices per included response variable.
/// x = i ÷ (xEdges ÷ 2) − 1, y = value × scale × 2 ÷ M − 1, in the precision and order that the functions state.
/// A row behind the end of the row list or of the block is never read; its value counts as 0.
/// @throws AssertionFailure "Inconsistent float count" when the layout's count of surfaces is not that of `responses`
/// @throws OrreryError when the vertices would not fit into memory or 32 bits
[[nodiscard]] std::vector<float> make2DVertexData(const PlotLayout& layout, const PlotSource& source);

/// Surfaces: two triangles per grid cell, normal and position per vertex, cells x-major, flat normals.
/// y = value × scale ÷ M; both axes run from −1 to 1. @throws as make2DVertexData
[[nodiscard]] std::vector<float> make3DVertexData(const PlotLayout& layout, const PlotSource& source);

/// The same into memory that the caller has: `vertices` must hold exactly the layout's floats.
void write2DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<float> vertices);
/// With 0 threads a large surface is shared among as many as pay; the bits are the same for any number.
void write3DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<float> vertices,
                       unsigned threads = 0);

/// One range per curve or surface: (s × P, P).
[[nodiscard]] std::vector<VertexRange> vertexRanges(const PlotLayout& layout);

/// One colour per included response variable: its red, green and blue, alpha 0.9.
[[nodiscard]] std::vector<Color> surfaceColors(std::span<const ResponseVariable> responses);

} // namespace orrery
