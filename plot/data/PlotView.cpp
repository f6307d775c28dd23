#include "plot/data/PlotView.h"

#include "platform/OrreryError.h"

#include <utility>

namespace orrery {

void StoredPlotView::setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) {
    if (data.size() != size) {
        throw AssertionFailure("Inconsistent float count");
    }
    m_vertices.assign(data.begin(), data.end());
    m_ranges = std::move(ranges);
}

} // namespace orrery
