#pragma once

#include "plot/data/PlotLayout.h"
#include "plot/data/PlotView.h"
#include "plot/data/VertexData.h"

namespace orrery {

/// Gives a plot to a view: dimensions, labels, vertices and colours, in the order in which a view wants them.
/// A layout without an axis or a surface clears the view's plot.
void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source);

} // namespace orrery
