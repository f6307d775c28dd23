#include "document/DocumentPlot.h"

#include <exception>
#include <optional>
#include <utility>

namespace orrery {

void DocumentPlot::draw() {
    m_isOutdated = false;
    m_session.layOut(m_reading.results());
    whileDrawing(
        [this](PlotView& view, const BuildOptions& options) { m_session.show(view, m_reading.results(), options); });
}

/// Calls it with the view, if there is one, and with a wait panel that shows and may end a long building.
void DocumentPlot::whileDrawing(const std::function<void(PlotView&, const BuildOptions&)>& draw) {
    if (m_outlets.glView == nullptr) return;
    BuildOptions options;
    std::optional<PanelWait> wait;
    if (WaitPanel* panel = m_outlets.waitPanel; panel != nullptr && layout().isDrawn()) {
        wait.emplace(*panel, "Drawing the plot\u2026");
        options.progress = [panel](double part) { return panel->update(part); };
    }
    draw(*m_outlets.glView, options);
}

void DocumentPlot::update(const SettingsSender& sender) {
    if (sender.tag == SettingsTag::RoleChooser && sender.row < variables().size()) {
        const RoleChange change = claimAxisRole(variables(), sender.row);
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
    draw();
}

void DocumentPlot::clear() {
    if (m_outlets.glView != nullptr) clearPlot(*m_outlets.glView);
}

void DocumentPlot::redraw() {
    if (m_outlets.glView != nullptr) m_outlets.glView->setNeedsDisplay();
}

void DocumentPlot::makePlotForDimensions(std::uint32_t dimensions, const std::vector<std::uint32_t>& indices) {
    PlotLayout wanted = layout();
    wanted.dimensions = dimensions;
    forget(); // the view's memory gets other rows than those of its last plot
    const PlotRows rows(m_reading.results(), indices);
    whileDrawing([&](PlotView& view, const BuildOptions& options) {
        orrery::makePlotForDimensions(view, wanted, rows.source(m_reading.results()), options);
    });
}

std::vector<float> DocumentPlot::make2DVertexData(const std::vector<std::uint32_t>& indices) {
    m_camera.reset();
    const PlotRows rows(m_reading.results(), indices);
    return orrery::make2DVertexData(layout(), rows.source(m_reading.results()));
}

std::vector<float> DocumentPlot::make3DVertexData(const std::vector<std::uint32_t>& indices) const {
    const PlotRows rows(m_reading.results(), indices);
    return orrery::make3DVertexData(layout(), rows.source(m_reading.results()));
}

PlotState DocumentPlot::state() const {
    PlotState state;
    for (const IndependentVariable& variable : m_reading.results().grid.variables) {
        state.variables.push_back({variable.name(), variable.function(), variable.constant()});
    }
    for (const ResponseVariable& response : m_reading.results().responses.variables) {
        state.responses.push_back({response.name(), response.includep(), response.scale(), response.color()});
    }
    m_camera.read(state);
    return state;
}

/// A plot that could not be drawn was chosen all the same, and is to be taken back.
void DocumentPlot::change(PlotControl control, const std::function<void()>& change) {
    const PlotState before = state();
    std::exception_ptr failure;
    try {
        change();
    } catch (...) {
        failure = std::current_exception();
    }
    m_setup.history().recordPlot(control, difference(before, state()));
    m_setup.historyChanged();
    if (failure) std::rethrow_exception(failure);
}

void DocumentPlot::chooseRole(std::size_t row, PlotRole role) {
    change({PlotAct::ChooseAxis, row}, [&] {
        variables()[row].setFunction(role);
        update({SettingsTag::RoleChooser, row});
    });
}

void DocumentPlot::hold(std::size_t row, float constant, PlotAct act) {
    change({act, row}, [&] {
        variables()[row].setConstant(constant);
        draw();
    });
}

void DocumentPlot::changeResponses(std::vector<ResponseVariable> records, PlotAct act,
                                   const ResponseVariable::Value& value) {
    change({act}, [&] {
        for (ResponseVariable& record : records) {
            record.setValue(responseKey(act), value);
        }
        draw();
    });
}

void DocumentPlot::resetCamera() {
    change({PlotAct::ResetCamera}, [this] { m_camera.reset(); });
}

/// The plot before the view: curves put the camera back when they are built.
void DocumentPlot::put(const PlotChange& change) {
    if (change.ofResults()) {
        makeChange(change, variables(), m_reading.results().responses.variables);
        m_reading.reloadSettings();
        draw();
    }
    m_camera.put(change);
}

} // namespace orrery
