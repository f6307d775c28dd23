// The document's camera, light and rotation: properties that live in the plot view.
#include "document/MyDocument.h"
#include "plot/data/Camera.h"

namespace orrery {

namespace {

float coordinate(PlotView* view, Vector3 CameraRecord::*vector, double Vector3::*axis) {
    return view == nullptr ? 0.0F : static_cast<float>(view->camera().*vector.*axis);
}

} // namespace

float MyDocument::eyeXPos() const {
    return coordinate(m_outlets.glView, &CameraRecord::viewPos, &Vector3::x);
}
float MyDocument::eyeYPos() const {
    return coordinate(m_outlets.glView, &CameraRecord::viewPos, &Vector3::y);
}
float MyDocument::eyeZPos() const {
    return coordinate(m_outlets.glView, &CameraRecord::viewPos, &Vector3::z);
}
void MyDocument::setEyeXPos(float x) {
    if (PlotView* view = m_outlets.glView) setCoordinate(*view, &CameraRecord::viewPos, &Vector3::x, x);
}
void MyDocument::setEyeYPos(float y) {
    if (PlotView* view = m_outlets.glView) setCoordinate(*view, &CameraRecord::viewPos, &Vector3::y, y);
}
void MyDocument::setEyeZPos(float z) {
    if (PlotView* view = m_outlets.glView) setCoordinate(*view, &CameraRecord::viewPos, &Vector3::z, z);
}

float MyDocument::eyeXDir() const {
    return coordinate(m_outlets.glView, &CameraRecord::viewDir, &Vector3::x);
}
float MyDocument::eyeYDir() const {
    return coordinate(m_outlets.glView, &CameraRecord::viewDir, &Vector3::y);
}
float MyDocument::eyeZDir() const {
    return coordinate(m_outlets.glView, &CameraRecord::viewDir, &Vector3::z);
}
void MyDocument::setEyeXDir(float x) {
    if (PlotView* view = m_outlets.glView) setCoordinate(*view, &CameraRecord::viewDir, &Vector3::x, x);
}
void MyDocument::setEyeYDir(float y) {
    if (PlotView* view = m_outlets.glView) setCoordinate(*view, &CameraRecord::viewDir, &Vector3::y, y);
}
void MyDocument::setEyeZDir(float z) {
    if (PlotView* view = m_outlets.glView) setCoordinate(*view, &CameraRecord::viewDir, &Vector3::z, z);
}

float MyDocument::lightHeight() const {
    return m_outlets.glView == nullptr ? 0.0F : m_outlets.glView->lightHeight();
}

void MyDocument::setLightHeight(float height) {
    if (m_outlets.glView == nullptr) return;
    m_outlets.glView->setLightHeight(height);
    redrawPlot();
}

void MyDocument::resetCamera() {
    if (m_outlets.glView != nullptr) orrery::resetCamera(*m_outlets.glView);
}

float MyDocument::yRotation() const {
    if (m_outlets.glView == nullptr) return 0;
    return wrappedRotation(m_outlets.glView->yRotation(), static_cast<float>(m_outlets.yRotationSlider->maxValue()));
}

void MyDocument::setYRotation(float sliderValue) {
    const float step =
        circularStep(m_yRotationSliderValue, sliderValue, static_cast<float>(m_outlets.yRotationSlider->maxValue()));
    if (m_outlets.glView != nullptr) m_outlets.glView->setYRotation(m_outlets.glView->yRotation() + step);
    m_yRotationSliderValue = sliderValue;
    redrawPlot();
    m_outlets.yRotationSlider->setNeedsDisplay();
}

void MyDocument::incYRotation(float step) {
    if (m_outlets.glView != nullptr) m_outlets.glView->setYRotation(m_outlets.glView->yRotation() + step);
    m_yRotationSliderValue += step;
    redrawPlot();
}

void MyDocument::toggleAnimatedRotation() {
    m_isAnimated = !m_isAnimated;
    if (m_timer != nullptr) m_timer->setResting(!m_isAnimated);
}

void MyDocument::animationTimer() {
    constexpr float degreesPerTick = 0.5F;
    if (m_isAnimated) setYRotation(m_yRotationSliderValue + degreesPerTick);
}

} // namespace orrery
