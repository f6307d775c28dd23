// The document's plot: what the user's choice of axes and responses makes the plot view show.
#include "document/MyDocument.h"
#include "plot/data/PlotLayout.h"
#include "plot/data/ShowPlot.h"
#include "plot/data/VertexData.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace orrery {

void MyDocument::setupPlotView() {
    m_plotIsOutdated = false;
    m_layout = orrery::plotLayout(m_results.grid.variables, m_results.responses.variables);
    if (m_layout.dimensions == 0 || m_layout.nSurfaces == 0) {
        clearPlot();
        return;
    }
    const std::vector<std::uint32_t> indices = makeCurrentIndexSet();
    if (m_outlets.glView == nullptr) return;
    m_outlets.glView->setDimensions(m_layout.dimensions);
    m_outlets.glView->setLabels(m_layout.labels);
    try {
        makePlotForDimensions(m_layout.dimensions, indices);
    } catch (const BuildCancelled&) {
        clearPlot();
        return;
    }
    m_outlets.glView->setColors(surfaceColors(m_results.responses.variables));
    m_outlets.glView->setNeedsDisplay();
}

void MyDocument::clearPlot() {
    if (m_outlets.glView == nullptr) return;
    m_outlets.glView->setSurfaces({}, 0, {});
    m_outlets.glView->setNeedsDisplay();
}

void MyDocument::makePlotForDimensions(std::uint32_t dimensions, const std::vector<std::uint32_t>& indices) {
    const std::uint32_t floats = dimensions == 2 ? make2DVertexData(indices) : make3DVertexData(indices);
    if (m_outlets.glView == nullptr) return;
    m_outlets.glView->setLentSurfaces(floats, vertexRanges(m_layout));
}

std::uint32_t MyDocument::make2DVertexData(const std::vector<std::uint32_t>& indices) {
    resetCamera(); // curves are drawn without a camera; a later surface starts from its defaults
    return fillVertexMemory(indices);
}

std::uint32_t MyDocument::make3DVertexData(const std::vector<std::uint32_t>& indices) {
    return fillVertexMemory(indices);
}

std::uint32_t MyDocument::fillVertexMemory(const std::vector<std::uint32_t>& indices) {
    if (m_outlets.glView == nullptr) return 0;
    BuildOptions options{.built = &m_builtPlot};
    std::optional<PanelWait> wait;
    if (WaitPanel* panel = m_outlets.waitPanel) {
        wait.emplace(*panel, "Drawing the plot\u2026");
        options.progress = [panel](double part) { return panel->update(part); };
    }
    return fillVertices(*m_outlets.glView, m_layout,
                        {m_results.table.cells, m_results.table.maxima, m_results.responses.variables, indices},
                        options);
}

void MyDocument::setSimulationData(CellBlock data) {
    m_builtPlot = {}; // made of the earlier ones
    m_results.table.cells = std::move(data);
}

void MyDocument::updatePlot(const SettingsSender& sender) {
    constexpr int roleChooser = 3;
    if (sender.tag == roleChooser && sender.row < m_results.grid.variables.size()) {
        const RoleChange change = claimAxisRole(m_results.grid.variables, sender.row);
        if (SettingsRows* rows = m_outlets.independentVariableSettings) {
            for (const int tag : {2, 1}) {
                for (const std::size_t row : change.disabled) {
                    rows->setControlEnabled(row, tag, false);
                }
                for (const std::size_t row : change.enabled) {
                    rows->setControlEnabled(row, tag, true);
                }
            }
        }
    }
    setupPlotView();
}

void MyDocument::redrawPlot() {
    if (m_outlets.glView != nullptr) m_outlets.glView->setNeedsDisplay();
}

void MyDocument::tabViewDidSelectTabViewItem(std::string_view identifier) {
    if (identifier == "2") redrawPlot();
}

} // namespace orrery
