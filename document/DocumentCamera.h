#pragma once

#include "document/DocumentOutlets.h"
#include "platform/RunLoop.h"
#include "plot/data/PlotState.h"

#include <memory>

namespace orrery {

/// Camera, light and rotation of a document's plot. They are read from the plot view and written into it, and are 0
/// without one. Owned by its document; main thread.
class DocumentCamera {
public:
    /// The outlets are the document's, and outlive this.
    explicit DocumentCamera(const DocumentOutlets& outlets) : m_outlets(outlets) {}

    /// A coordinate of the eye or of the point looked at, such as (viewPos, x).
    [[nodiscard]] float coordinate(Vector3 CameraRecord::*vector, double Vector3::*axis) const;
    void setCoordinate(Vector3 CameraRecord::*vector, double Vector3::*axis, float value);
    [[nodiscard]] float lightHeight() const;
    void setLightHeight(float height);
    void reset();

    /// The angle folded into the rotation slider's turn, degrees.
    [[nodiscard]] float yRotation() const;
    /// Turns the scene by the way from the slider's last value to this one, the short way round.
    void setYRotation(float sliderValue);
    void incYRotation(float step);
    [[nodiscard]] float sliderValue() const { return m_sliderValue; }

    void startTimer(RunLoop& runLoop);
    void stopTimer() { m_timer.reset(); }
    void tick(); // of the timer
    void toggleAnimation();
    [[nodiscard]] bool isAnimated() const { return m_isAnimated; }

    // What undo compares and puts back.
    void read(PlotState& state) const;
    void put(const PlotChange& change);

private:
    void turn(float step);
    void redraw();

    const DocumentOutlets& m_outlets;
    std::unique_ptr<RunLoop::Source> m_timer;
    bool m_isAnimated = false;
    float m_sliderValue = 0;
};

} // namespace orrery
