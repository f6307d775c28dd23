#include "plot/data/PlotView.h"

#include "platform/values/OrreryError.h"

#include <utility>

namespace orrery {

void setCoordinate(PlotView& view, Vector3 CameraRecord::*vector, double Vector3::*axis, float value) {
    view.camera().*vector.*axis = static_cast<double>(value);
    // Near and far plane follow the depths alone.
    if (axis == &Vector3::z) view.updateProjection();
    view.setNeedsDisplay();
}

void resetCamera(PlotView& view) {
    for (double Vector3::*axis : {&Vector3::x, &Vector3::y, &Vector3::z}) {
        setCoordinate(view, &CameraRecord::viewPos, axis, static_cast<float>(defaultViewPos.*axis));
        setCoordinate(view, &CameraRecord::viewDir, axis, static_cast<float>(defaultViewDir.*axis));
    }
    CameraRecord& camera = view.camera();
    camera.viewUp = {0, 1, 0};
    camera.rotPoint = {0, 0, 0};
    camera.aperture = 40;
    view.setLightHeight(defaultLightHeight);
    view.setNeedsDisplay();
}

void clearPlot(PlotView& view) {
    view.setSurfaces({}, 0, {});
    view.setNeedsDisplay();
}

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
