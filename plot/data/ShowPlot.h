#pragma once

#include "plot/data/PlotLayout.h"
#include "plot/data/PlotView.h"
#include "plot/data/VertexData.h"

#include <cstdint>

namespace orrery {

/// Fills memory of the view with the plot's vertices, but for those that `options.built` says are there already. They
/// are shown by its setLentSurfaces, which is to get the count of floats that this returns.
/// @throws as vertexFloats, PlotView::lendVertices and write3DVertexData
[[nodiscard]] std::uint32_t fillVertices(PlotView& view, const PlotLayout& layout, const PlotSource& source,
                                         BuildOptions options = {});

/// Gives a plot to a view: dimensions, labels, vertices and colours, in the order in which a view wants them.
/// A layout without an axis or a surface clears the view's plot.
void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source);

} // namespace orrery
