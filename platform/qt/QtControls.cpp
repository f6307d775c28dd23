#include "platform/qt/QtControls.h"

#include <QAbstractSlider>
#include <QPushButton>
#include <QSignalBlocker>

namespace orrery {

QtTwoStateButton::QtTwoStateButton(QPushButton* button) : m_button(button) {
    button->setCheckable(true);
}

ButtonState QtTwoStateButton::state() const {
    return m_button != nullptr && m_button->isChecked() ? ButtonState::On : ButtonState::Off;
}

void QtTwoStateButton::setState(ButtonState state) {
    if (m_button != nullptr) m_button->setChecked(state == ButtonState::On); // emits toggled, never clicked
}

void QtTwoStateButton::setEnabled(bool enabled) {
    if (m_button != nullptr) m_button->setEnabled(enabled);
}

QtProgressWheel::QtProgressWheel(QWidget* indicator) : m_indicator(indicator) {
    indicator->hide();
}

void QtProgressWheel::startAnimation() {
    if (m_indicator != nullptr) m_indicator->show();
}

void QtProgressWheel::stopAnimation() {
    if (m_indicator != nullptr) m_indicator->hide();
}

QtSlider::QtSlider(QAbstractSlider* slider) : m_slider(slider) {}

double QtSlider::maxValue() const {
    constexpr double fullTurn = 360;
    return m_slider == nullptr ? fullTurn : m_slider->maximum();
}

void QtSlider::setNeedsDisplay() {
    if (m_slider != nullptr) m_slider->update();
}

} // namespace orrery
