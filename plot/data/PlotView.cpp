#include "plot/data/PlotView.h"

#include "platform/OrreryError.h"

#include <utility>

namespace orrery {

VertexMemory StoredPlotView::lendVertices(std::size_t size) {
    const bool kept = m_lentBefore && m_vertices.size() == size;
    m_lentBefore = false;
    m_ranges.clear();
    setFailure({});
    if (size > m_vertices.capacity()) {
        m_vertices = {}; // the old block goes before the new one comes
    }
    m_vertices.resize(size);
    return {{{0, m_vertices}}, kept};
}

void StoredPlotView::setLentSurfaces(std::uint32_t size, std::vector<VertexRange> ranges) {
    if (m_vertices.size() != size) {
        throw AssertionFailure("Inconsistent float count");
    }
    m_lentBefore = size > 0;
    m_ranges = std::move(ranges);
}

void StoredPlotView::setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) {
    if (data.size() != size) {
        throw AssertionFailure("Inconsistent float count");
    }
    m_lentBefore = false;
    setFailure({});
    m_vertices.assign(data.begin(), data.end());
    m_ranges = std::move(ranges);
}

} // namespace orrery
