#include "app/plot/CameraControls.h"

#include "app/widgets/UndoPassThrough.h"
#include "app/widgets/WheelGuard.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

#include <QSignalBlocker>
#include <array>
#include <cmath>
#include <functional>

namespace orrery {

namespace {

constexpr float lightSteps = 20; // of the slider in a unit of height

/// The control's own change, which sends nothing.
template <typename Control, typename Value>
void showValue(Control& control, Value value) {
    const QSignalBlocker quiet(&control);
    control.setValue(value);
}

/// A rotation as the slider shows it: a turn to the left of its start counts from its end.
int sliderPosition(float rotation, int maximum) {
    const auto turn = static_cast<float>(maximum);
    const float wrapped = std::fmod(rotation, turn);
    return static_cast<int>(std::lround(wrapped < 0 ? wrapped + turn : wrapped));
}

/// In the order of the controls.
std::array<double, 6> coordinatesOf(const CameraChoice& camera) {
    return {camera.viewPos.x, camera.viewPos.y, camera.viewPos.z, camera.viewDir.x, camera.viewDir.y, camera.viewDir.z};
}

} // namespace

CameraControls::CameraControls(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu)
    : m_document(document), m_ui(ui),
      m_menu(menu), m_coordinates{{ui.eyeXPos, &MyDocument::eyeXPos, &MyDocument::setEyeXPos},
                                  {ui.eyeYPos, &MyDocument::eyeYPos, &MyDocument::setEyeYPos},
                                  {ui.eyeZPos, &MyDocument::eyeZPos, &MyDocument::setEyeZPos},
                                  {ui.eyeXDir, &MyDocument::eyeXDir, &MyDocument::setEyeXDir},
                                  {ui.eyeYDir, &MyDocument::eyeYDir, &MyDocument::setEyeYDir},
                                  {ui.eyeZDir, &MyDocument::eyeZDir, &MyDocument::setEyeZDir}},
      m_rotationSlider(ui.yRotationSlider) {
    connectCoordinates();
    connect(ui.lightHeight, &QSlider::valueChanged, this,
            [this](int value) { setLight(static_cast<float>(value) / lightSteps); });
    connect(ui.yRotationSlider, &QSlider::valueChanged, this, [this](int value) { rotate(static_cast<float>(value)); });
    connect(ui.yRotationSlider, &QSlider::sliderReleased, this, [this] { follow(); });
    connect(ui.animate, &QPushButton::clicked, this, [this] { toggleAnimation(); });
    connect(menu.actionAnimate, &QAction::triggered, this, [this] { toggleAnimation(); });
    connect(ui.resetCamera, &QPushButton::clicked, this, [this] { m_document.plot().resetCamera(); });
    connect(menu.actionResetCamera, &QAction::triggered, this, [this] { m_document.plot().resetCamera(); });
}

void CameraControls::connectCoordinates() {
    for (std::size_t i = 0; i < m_coordinates.size(); ++i) {
        QDoubleSpinBox& control = *m_coordinates[i].control;
        guardFromWheel(control);
        letUndoPassThrough(control);
        control.setKeyboardTracking(false); // a number that is being typed is none yet
        connect(&control, &QDoubleSpinBox::valueChanged, this, [this, i](double value) { setCoordinate(i, value); });
    }
}

void CameraControls::setCoordinate(std::size_t number, double value) {
    m_document.plot().change({PlotAct::MoveCamera, number}, [&] {
        std::invoke(m_coordinates[number].setValue, m_document, static_cast<float>(value));
    });
}

void CameraControls::setLight(float height) {
    m_document.plot().change({PlotAct::MoveLight}, [&] { m_document.setLightHeight(height); });
}

void CameraControls::rotate(float sliderValue) {
    m_document.plot().change({PlotAct::Rotate}, [&] { m_document.setYRotation(sliderValue); });
}

/// None where several controls show it.
QWidget* CameraControls::controlOf(const PlotChange& change) const {
    std::vector<QWidget*> moved;
    if (change.rotation) moved.push_back(m_ui.yRotationSlider);
    if (change.camera) {
        const auto& [before, after, row] = *change.camera;
        if (before.lightHeight != after.lightHeight) moved.push_back(m_ui.lightHeight);
        const auto old = coordinatesOf(before);
        const auto present = coordinatesOf(after);
        for (std::size_t i = 0; i < m_coordinates.size(); ++i) {
            if (old.at(i) != present.at(i)) moved.push_back(m_coordinates[i].control);
        }
    }
    return moved.size() == 1 ? moved.front() : nullptr;
}

void CameraControls::setLightBounds() {
    const QSignalBlocker quiet(m_ui.lightHeight);
    m_ui.lightHeight->setRange(static_cast<int>(std::lround(m_document.lightSliderMin() * lightSteps)),
                               static_cast<int>(std::lround(m_document.lightSliderMax() * lightSteps)));
    m_ui.lightHeight->setSingleStep(static_cast<int>(lightSteps) / 4);
    m_ui.lightHeight->setPageStep(static_cast<int>(lightSteps) * 2);
    follow();
}

void CameraControls::toggleAnimation() {
    m_document.toggleAnimatedRotation();
    follow();
}

/// Called with every frame of the animation: what is right already is left alone.
void CameraControls::follow() {
    for (const Coordinate& coordinate : m_coordinates) {
        const auto value = static_cast<double>(std::invoke(coordinate.value, m_document));
        if (std::abs(value - coordinate.control->value()) > 0.005) showValue(*coordinate.control, value);
    }
    showValue(*m_ui.lightHeight, static_cast<int>(std::lround(m_document.lightHeight() * lightSteps)));
    if (!m_ui.yRotationSlider->isSliderDown()) { // the hand goes first
        showValue(*m_ui.yRotationSlider, sliderPosition(m_document.yRotation(), m_ui.yRotationSlider->maximum()));
    }
    m_ui.animate->setChecked(m_document.isAnimated());
    m_menu.actionAnimate->setChecked(m_document.isAnimated());
}

} // namespace orrery
