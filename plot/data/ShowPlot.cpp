#include "plot/data/ShowPlot.h"

#include <cstdint>

namespace orrery {

std::span<const float> fillVertices(PlotView& view, const PlotLayout& layout, const PlotSource& source,
                                    BuildOptions options) {
    BuiltPlot unknown;
    BuiltPlot& built = options.built != nullptr ? *options.built : unknown;
    const VertexMemory memory = view.lendVertices(vertexFloats(layout, built.floats));
    if (!memory.kept) {
        built = {};
    }
    options.built = &built;
    (layout.dimensions == 2 ? write2DVertexData : write3DVertexData)(layout, source, memory.floats, options);
    return memory.floats;
}

void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source) {
    if (layout.dimensions == 0 || layout.nSurfaces == 0) {
        view.setSurfaces({}, 0, {});
    } else {
        view.setDimensions(layout.dimensions);
        view.setLabels(layout.labels);
        const std::span<const float> vertices = fillVertices(view, layout, source);
        view.setSurfaces(vertices, static_cast<std::uint32_t>(vertices.size()), vertexRanges(layout));
        view.setColors(surfaceColors(source.responses));
    }
    view.setNeedsDisplay();
}

} // namespace orrery
