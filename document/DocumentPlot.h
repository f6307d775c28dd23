#pragma once

#include "document/DocumentCamera.h"
#include "document/DocumentOutlets.h"
#include "document/PlotAct.h"
#include "document/ResultReading.h"
#include "document/SetupEditing.h"
#include "plot/data/PlotSession.h"
#include "plot/data/PlotState.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace orrery {

/// The control that sends an action from a row of settings.
struct SettingsSender {
    SettingsTag tag = SettingsTag::RoleChooser;
    std::size_t row = 0; // position of the variable in its list
};

/// The plot of a document's results: what is chosen of them, drawn in the plot view. Owned by its document; main
/// thread.
///
/// What a person does on the plot tab is a step of undo, which goes on while the control moves. It is no part of the
/// setup and never marks the document edited.
class DocumentPlot {
public:
    /// All of them are the document's, and outlive this.
    DocumentPlot(ResultReading& reading, DocumentCamera& camera, SetupEditing& setup, const DocumentOutlets& outlets)
        : m_reading(reading), m_camera(camera), m_setup(setup), m_outlets(outlets) {}
    DocumentPlot(const DocumentPlot&) = delete;
    DocumentPlot& operator=(const DocumentPlot&) = delete;
    ~DocumentPlot() = default;

    /// Shows what is chosen of the results. A plot of millions of cells is built behind the wait panel; where the user
    /// cancels it, the plot is cleared. @throws as showPlot
    void draw();
    /// Draws what a control of the settings has changed: a role is taken from the variable that had it. @throws as draw
    void update(const SettingsSender& sender);
    void clear();
    void redraw();
    /// The results are about to be replaced.
    void forget() { m_session.forget(); }
    /// Whether the plot shows an earlier run than the present results.
    [[nodiscard]] bool isOutdated() const { return m_isOutdated; }
    void markOutdated() { m_isOutdated = true; }
    [[nodiscard]] const PlotLayout& layout() const { return m_session.layout(); }

    // Each part of the plot's building alone, for those rows of the layout that was last set up.
    void makePlotForDimensions(std::uint32_t dimensions, const std::vector<std::uint32_t>& indices);
    [[nodiscard]] std::vector<float> make2DVertexData(const std::vector<std::uint32_t>& indices); // resets the camera
    [[nodiscard]] std::vector<float> make3DVertexData(const std::vector<std::uint32_t>& indices) const;

    /// Makes the change that a person makes at a control of the plot tab.
    void change(PlotControl control, const std::function<void()>& change);
    // Each of these is such a change, and draws the plot anew. @throws as draw, with the choice made
    void chooseRole(std::size_t row, PlotRole role); // taken from the variable that has the axis
    void hold(std::size_t row, float constant, PlotAct act);
    /// Sets what the act is about of the responses, which may be records of earlier results.
    void changeResponses(std::vector<ResponseVariable> records, PlotAct act, const ResponseVariable::Value& value);
    void resetCamera();
    void endMove() { m_setup.history().endMove(); } // the control was let go
    [[nodiscard]] PlotState state() const;
    /// Makes a change of the plot that was undone or redone.
    void put(const PlotChange& change);

private:
    void whileDrawing(const std::function<void(PlotView&, const BuildOptions&)>& draw);
    [[nodiscard]] std::vector<IndependentVariable>& variables() { return m_reading.results().grid.variables; }

    ResultReading& m_reading;
    DocumentCamera& m_camera;
    SetupEditing& m_setup;
    const DocumentOutlets& m_outlets;
    PlotSession m_session;
    bool m_isOutdated = false;
};

} // namespace orrery
