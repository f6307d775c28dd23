#include "app/widgets/WheelGuard.h"

#include <QEvent>
#include <QWidget>

namespace orrery {

namespace {

class WheelGuard : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* control = qobject_cast<QWidget*>(watched);
        if (event->type() != QEvent::Wheel || control == nullptr || control->hasFocus()) return false;
        event->ignore();
        return true;
    }
};

} // namespace

void guardFromWheel(QWidget& control) {
    control.setFocusPolicy(Qt::StrongFocus); // the wheel alone gives no focus
    control.installEventFilter(new WheelGuard(&control));
}

} // namespace orrery
