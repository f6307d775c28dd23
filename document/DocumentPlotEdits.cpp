// What the user chooses on the plot tab, each a step of undo. It is no part of the setup and counts no change.
#include "document/MyDocument.h"

#include <exception>

namespace orrery {

PlotState MyDocument::plotState() const {
    PlotState state;
    for (const IndependentVariable& variable : m_results.grid.variables) {
        state.variables.push_back({variable.name(), variable.function(), variable.constant()});
    }
    for (const ResponseVariable& response : m_results.responses.variables) {
        state.responses.push_back({response.name(), response.includep(), response.scale(), response.color()});
    }
    if (PlotView* view = m_outlets.glView) {
        state.camera = {view->camera().viewPos, view->camera().viewDir, view->lightHeight()};
        state.rotation = {view->yRotation(), m_yRotationSliderValue};
    }
    return state;
}

/// A plot that could not be drawn was chosen all the same, and is to be taken back.
void MyDocument::changePlot(PlotControl control, const std::function<void()>& change) {
    const PlotState before = plotState();
    std::exception_ptr failure;
    try {
        change();
    } catch (...) {
        failure = std::current_exception();
    }
    m_setup.history().recordPlot(control, difference(before, plotState()));
    m_setup.historyChanged();
    if (failure) std::rethrow_exception(failure);
}

void MyDocument::chooseRole(std::size_t row, PlotRole role) {
    changePlot({PlotAct::ChooseAxis, row}, [&] {
        m_results.grid.variables[row].setFunction(role);
        updatePlot({SettingsTag::RoleChooser, row});
    });
}

void MyDocument::hold(std::size_t row, float constant, PlotAct act) {
    changePlot({act, row}, [&] {
        m_results.grid.variables[row].setConstant(constant);
        setupPlotView();
    });
}

void MyDocument::changeResponses(std::vector<ResponseVariable> records, PlotAct act,
                                 const ResponseVariable::Value& value) {
    changePlot({act}, [&] {
        for (ResponseVariable& record : records) {
            record.setValue(responseKey(act), value);
        }
        updateScale();
    });
}

void MyDocument::resetCameraByHand() {
    changePlot({PlotAct::ResetCamera}, [this] { resetCamera(); });
}

/// The plot before the view: curves put the camera back when they are built.
void MyDocument::putPlotChange(const PlotChange& change) {
    if (change.ofResults()) {
        makeChange(change, m_results.grid.variables, m_results.responses.variables);
        reloadSettings();
        setupPlotView();
    }
    putViewChange(change);
}

void MyDocument::putViewChange(const PlotChange& change) {
    PlotView* view = m_outlets.glView;
    if (view == nullptr) return;
    if (change.camera) {
        CameraRecord& camera = view->camera();
        const CameraChoice choice = changed({camera.viewPos, camera.viewDir, view->lightHeight()}, *change.camera);
        camera.viewPos = choice.viewPos;
        camera.viewDir = choice.viewDir;
        view->setLightHeight(choice.lightHeight);
        view->updateProjection();
    }
    if (change.rotation) {
        view->setYRotation(change.rotation->after.angle);
        m_yRotationSliderValue = change.rotation->after.sliderValue;
        m_outlets.yRotationSlider->setNeedsDisplay();
    }
    if (change.camera || change.rotation) view->setNeedsDisplay();
}

} // namespace orrery
