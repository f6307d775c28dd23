#include "plot/data/ShowPlot.h"

namespace orrery {

std::uint32_t fillVertices(PlotView& view, const PlotLayout& layout, const PlotSource& source, BuildOptions options) {
    BuiltPlot unknown;
    BuiltPlot& built = options.built != nullptr ? *options.built : unknown;
    const std::uint32_t floats = vertexFloats(layout, view.heldFloats());
    const VertexMemory memory = view.lendVertices(floats);
    if (!memory.kept) {
        built = {};
    }
    options.built = &built;
    (layout.dimensions == 2 ? write2DVertexData : write3DVertexData)(layout, source, memory.pieces, options);
    return floats;
}

void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source) {
    if (layout.dimensions == 0 || layout.nSurfaces == 0) {
        view.setSurfaces({}, 0, {});
    } else {
        view.setDimensions(layout.dimensions);
        view.setLabels(layout.labels);
        const std::uint32_t floats = fillVertices(view, layout, source);
        view.setLentSurfaces(floats, vertexRanges(layout));
        view.setColors(surfaceColors(source.responses));
    }
    view.setNeedsDisplay();
}

} // namespace orrery
