// The document's plot: what the user's choice of axes and responses makes the plot view show.
#include "document/MyDocument.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace orrery {

void MyDocument::setupPlotView() {
    m_plotIsOutdated = false;
    m_plot.layOut(m_results);
    whileDrawing([this](PlotView& view, const BuildOptions& options) { m_plot.show(view, m_results, options); });
}

void MyDocument::clearPlot() {
    if (m_outlets.glView != nullptr) orrery::clearPlot(*m_outlets.glView);
}

/// Calls it with the view, if there is one, and with a wait panel that shows and may end a long building.
void MyDocument::whileDrawing(const std::function<void(PlotView&, const BuildOptions&)>& draw) {
    if (m_outlets.glView == nullptr) return;
    BuildOptions options;
    std::optional<PanelWait> wait;
    if (WaitPanel* panel = m_outlets.waitPanel; panel != nullptr && m_plot.layout().isDrawn()) {
        wait.emplace(*panel, "Drawing the plot\u2026");
        options.progress = [panel](double part) { return panel->update(part); };
    }
    draw(*m_outlets.glView, options);
}

void MyDocument::makePlotForDimensions(std::uint32_t dimensions, const std::vector<std::uint32_t>& indices) {
    PlotLayout layout = plotLayout();
    layout.dimensions = dimensions;
    m_plot.forget(); // the view's memory gets other rows than those of its last plot
    whileDrawing([&](PlotView& view, const BuildOptions& options) {
        orrery::makePlotForDimensions(view, layout, plotSource(m_results, indices), options);
    });
}

std::vector<float> MyDocument::make2DVertexData(const std::vector<std::uint32_t>& indices) {
    resetCamera();
    return orrery::make2DVertexData(plotLayout(), plotSource(m_results, indices));
}

std::vector<float> MyDocument::make3DVertexData(const std::vector<std::uint32_t>& indices) const {
    return orrery::make3DVertexData(plotLayout(), plotSource(m_results, indices));
}

void MyDocument::setSimulationData(CellBlock data) {
    m_plot.forget();
    m_results.table.cells = std::move(data);
}

void MyDocument::updatePlot(const SettingsSender& sender) {
    if (sender.tag == SettingsTag::RoleChooser && sender.row < m_results.grid.variables.size()) {
        const RoleChange change = claimAxisRole(m_results.grid.variables, sender.row);
        const auto enable = [this](const std::vector<std::size_t>& rows, SettingsTag tag, bool enabled) {
            for (const std::size_t row : rows) {
                m_outlets.independentVariableSettings->setControlEnabled(row, tag, enabled);
            }
        };
        for (const SettingsTag tag : {SettingsTag::HeldSlider, SettingsTag::HeldField}) {
            enable(change.disabled, tag, false);
            enable(change.enabled, tag, true);
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
