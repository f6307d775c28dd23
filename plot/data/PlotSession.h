#pragma once

#include "plot/data/PlotLayout.h"
#include "plot/data/PlotRows.h"
#include "plot/data/PlotView.h"
#include "plot/data/VertexData.h"
#include "run/RunResults.h"

namespace orrery {

/// Fills memory of the view with the plot's vertices, but for those that `options.built` says are there already, and
/// has the view show them. @throws as vertexFloats, PlotView::lendVertices and write3DVertexData
void makePlotForDimensions(PlotView& view, const PlotLayout& layout, const PlotSource& source,
                           BuildOptions options = {});

/// Gives a plot to a view: dimensions, labels, vertices and colours, in the order in which a view wants them. Curves
/// put the camera back, since they are drawn without one and a later surface starts from its defaults. The view's plot
/// is cleared where nothing is drawn, and where the options' progress cancels. @throws as makePlotForDimensions
void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source, const BuildOptions& options = {});

/// A plot of a run's results, as their variables and responses hold the choice: how it is laid out, and what of it the
/// view's memory holds already.
class PlotSession {
public:
    /// Lays out what is chosen of the results now.
    void layOut(const RunResults& results);
    [[nodiscard]] const PlotLayout& layout() const { return m_layout; }
    /// Shows the plot that was laid out, of the rows that are chosen now. @throws as showPlot, PlotRows::choose
    void show(PlotView& view, const RunResults& results, BuildOptions options = {});
    /// The results are other ones: what the view's memory holds is of none of them.
    void forget() {
        m_built = {};
        m_rows.forget();
    }

private:
    PlotLayout m_layout;
    PlotRows m_rows;
    BuiltPlot m_built;
};

} // namespace orrery
