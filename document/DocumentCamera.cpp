#include "document/DocumentCamera.h"

#include "plot/data/Camera.h"

#include <chrono>
#include <cstdint>

namespace orrery {

namespace {

// The interval is kept as a single-precision number of seconds, 0.01666666753590107.
constexpr auto animationInterval =
    std::chrono::nanoseconds(static_cast<std::int64_t>(static_cast<double>(1.0F / 60.0F) * 1e9));
constexpr float degreesPerTick = 0.5F;

} // namespace

float DocumentCamera::coordinate(Vector3 CameraRecord::*vector, double Vector3::*axis) const {
    return m_outlets.glView == nullptr ? 0.0F : static_cast<float>(m_outlets.glView->camera().*vector.*axis);
}

void DocumentCamera::setCoordinate(Vector3 CameraRecord::*vector, double Vector3::*axis, float value) {
    if (m_outlets.glView != nullptr) orrery::setCoordinate(*m_outlets.glView, vector, axis, value);
}

float DocumentCamera::lightHeight() const {
    return m_outlets.glView == nullptr ? 0.0F : m_outlets.glView->lightHeight();
}

void DocumentCamera::setLightHeight(float height) {
    if (m_outlets.glView != nullptr) m_outlets.glView->setLightHeight(height);
    redraw();
}

void DocumentCamera::reset() {
    if (m_outlets.glView != nullptr) resetCamera(*m_outlets.glView);
}

float DocumentCamera::yRotation() const {
    if (m_outlets.glView == nullptr) return 0;
    return wrappedRotation(m_outlets.glView->yRotation(), static_cast<float>(m_outlets.yRotationSlider->maxValue()));
}

void DocumentCamera::setYRotation(float sliderValue) {
    const float step =
        circularStep(m_sliderValue, sliderValue, static_cast<float>(m_outlets.yRotationSlider->maxValue()));
    m_sliderValue = sliderValue;
    turn(step);
    m_outlets.yRotationSlider->setNeedsDisplay();
}

void DocumentCamera::incYRotation(float step) {
    m_sliderValue += step;
    turn(step);
}

void DocumentCamera::turn(float step) {
    if (m_outlets.glView != nullptr) m_outlets.glView->setYRotation(m_outlets.glView->yRotation() + step);
    redraw();
}

void DocumentCamera::redraw() {
    if (m_outlets.glView != nullptr) m_outlets.glView->setNeedsDisplay();
}

void DocumentCamera::startTimer(RunLoop& runLoop) {
    m_timer = runLoop.repeat(animationInterval, [this] { tick(); });
    m_timer->setResting(!m_isAnimated);
}

void DocumentCamera::tick() {
    if (m_isAnimated) setYRotation(m_sliderValue + degreesPerTick);
}

void DocumentCamera::toggleAnimation() {
    m_isAnimated = !m_isAnimated;
    if (m_timer != nullptr) m_timer->setResting(!m_isAnimated);
}

void DocumentCamera::read(PlotState& state) const {
    PlotView* view = m_outlets.glView;
    if (view == nullptr) return;
    state.camera = {view->camera().viewPos, view->camera().viewDir, view->lightHeight()};
    state.rotation = {view->yRotation(), m_sliderValue};
}

void DocumentCamera::put(const PlotChange& change) {
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
        m_sliderValue = change.rotation->after.sliderValue;
        m_outlets.yRotationSlider->setNeedsDisplay();
    }
    if (change.camera || change.rotation) view->setNeedsDisplay();
}

} // namespace orrery
