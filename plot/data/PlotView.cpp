#include "plot/data/PlotView.h"

#include "platform/OrreryError.h"

#include <utility>

namespace orrery {

VertexMemory StoredPlotView::lendVertices(std::size_t size) {
    const bool kept = m_lentBefore && m_vertices.size() == size;
    m_lentBefore = false;
    m_ranges.clear();
    m_vertices.resize(size);
    return {m_vertices, kept};
}

void StoredPlotView::setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) {
    if (data.size() != size) {
        throw AssertionFailure("Inconsistent float count");
    }
    m_lentBefore = !data.empty() && data.data() == m_vertices.data();
    if (!m_lentBefore) {
        m_vertices.assign(data.begin(), data.end());
    }
    m_ranges = std::move(ranges);
}

} // namespace orrery
