#include "app/CameraControls.h"

#include "app/WheelGuard.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

#include <QSignalBlocker>
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
            [this](int value) { m_document.setLightHeight(static_cast<float>(value) / lightSteps); });
    connect(ui.yRotationSlider, &QSlider::valueChanged, this,
            [this](int value) { m_document.setYRotation(static_cast<float>(value)); });
    connect(ui.yRotationSlider, &QSlider::sliderReleased, this, [this] { follow(); });
    connect(ui.animate, &QPushButton::clicked, this, [this] { toggleAnimation(); });
    connect(menu.actionAnimate, &QAction::triggered, this, [this] { toggleAnimation(); });
    connect(ui.resetCamera, &QPushButton::clicked, this, [this] { m_document.resetCamera(); });
    connect(menu.actionResetCamera, &QAction::triggered, this, [this] { m_document.resetCamera(); });
}

void CameraControls::connectCoordinates() {
    for (const Coordinate& coordinate : m_coordinates) {
        guardFromWheel(*coordinate.control);
        connect(coordinate.control, &QDoubleSpinBox::valueChanged, this,
                [document = &m_document, set = coordinate.setValue](double value) {
                    std::invoke(set, document, static_cast<float>(value));
                });
    }
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
