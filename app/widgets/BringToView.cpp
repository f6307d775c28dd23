#include "app/widgets/BringToView.h"

#include <QScrollArea>
#include <QTimer>
#include <QWidget>

namespace orrery {

/// The scrolling waits until a tab that has just come to the front has its layout.
void bringToView(QWidget& control, bool withKeyboard) {
    if (withKeyboard) control.setFocus(Qt::ShortcutFocusReason); // selects a field's text
    QTimer::singleShot(0, &control, [control = &control] {
        for (QWidget* around = control->parentWidget(); around != nullptr; around = around->parentWidget()) {
            if (auto* area = qobject_cast<QScrollArea*>(around)) area->ensureWidgetVisible(control);
        }
    });
}

} // namespace orrery
