#include "plot/data/ShowPlot.h"

#include <cstdint>

namespace orrery {

void showPlot(PlotView& view, const PlotLayout& layout, const PlotSource& source) {
    if (layout.dimensions == 0 || layout.nSurfaces == 0) {
        view.setSurfaces({}, 0, {});
    } else {
        view.setDimensions(layout.dimensions);
        view.setLabels(layout.labels);
        const std::vector<float> vertices =
            layout.dimensions == 2 ? make2DVertexData(layout, source) : make3DVertexData(layout, source);
        view.setSurfaces(vertices, static_cast<std::uint32_t>(vertices.size()), vertexRanges(layout));
        view.setColors(surfaceColors(source.responses));
    }
    view.setNeedsDisplay();
}

} // namespace orrery
