#pragma once

#include "plot/data/PlotLayout.h"
#include "plot/data/PlotView.h"
#include "plot/data/VertexData.h"

#include <span>

namespace orrery {

/// Fills memory of the view with the plot's vertices, but for those that `options.built` says are there already. They
/// are shown once they are given to its setSurfaces. @throws as vertexFloats and write3DVertexData
[[nodiscard]] std::span<const float> fillVertices(PlotView& view, const PlotLayout& layout, const PlotSource& source,
                                                  BuildOptions options = {});

/// Gives a plot to a view: dimensions, labels, vertices and colours, in the order in which a view wants them.
/// A layout without an axis or a surface clears the view's plot.
void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source);

} // namespace orrery
