#pragma once

#include "platform/Outlets.h"

#include <QPointer>

class QAbstractSlider;
class QPushButton;
class QWidget;

namespace orrery {

/// The outlets of a document over Qt's own widgets. Each may outlive its widget, and then does nothing.

/// A checkable push button; checked is on.
class QtTwoStateButton : public TwoStateButton {
public:
    explicit QtTwoStateButton(QPushButton* button);
    [[nodiscard]] ButtonState state() const override;
    void setState(ButtonState state) override; // sends no action
    void setEnabled(bool enabled) override;

private:
    QPointer<QPushButton> m_button;
};

/// A busy indicator that is shown while it turns.
class QtProgressWheel : public ProgressWheel {
public:
    explicit QtProgressWheel(QWidget* indicator);
    void startAnimation() override;
    void stopAnimation() override;

private:
    QPointer<QWidget> m_indicator;
};

class QtSlider : public Slider {
public:
    explicit QtSlider(QAbstractSlider* slider);
    [[nodiscard]] double maxValue() const override;
    void setNeedsDisplay() override;

private:
    QPointer<QAbstractSlider> m_slider;
};

} // namespace orrery
