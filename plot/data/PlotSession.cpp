#include "plot/data/PlotSession.h"

#include "run/IndexSet.h"

namespace orrery {

void makePlotForDimensions(PlotView& view, const PlotLayout& layout, const PlotSource& source, BuildOptions options) {
    BuiltPlot unknown;
    BuiltPlot& built = options.built != nullptr ? *options.built : unknown;
    const std::uint32_t floats = vertexFloats(layout, view.heldFloats());
    const VertexMemory memory = view.lendVertices(floats);
    if (!memory.kept) built = {};
    options.built = &built;
    (layout.dimensions == 2 ? write2DVertexData : write3DVertexData)(layout, source, memory.pieces, options);
    view.setLentSurfaces(floats, vertexRanges(layout));
}

void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source, const BuildOptions& options) {
    if (!layout.isDrawn()) return clearPlot(view);
    view.setDimensions(layout.dimensions);
    view.setLabels(layout.labels);
    if (layout.dimensions == 2) resetCamera(view);
    try {
        makePlotForDimensions(view, layout, source, options);
    } catch (const BuildCancelled&) {
        return clearPlot(view);
    }
    view.setColors(surfaceColors(source.responses));
    view.setNeedsDisplay();
}

void PlotSession::layOut(const RunResults& results) {
    m_layout = plotLayout(results.grid.variables, results.responses.variables);
}

void PlotSession::show(PlotView& view, const RunResults& results, BuildOptions options) {
    options.built = &m_built;
    const bool drawn = m_layout.isDrawn();
    if (m_rows.choose(results, drawn ? currentIndexSet(results.grid.variables) : std::vector<std::uint32_t>())) {
        m_built = {};
    }
    showPlot(view, m_layout, m_rows.source(results), options);
}

} // namespace orrery
