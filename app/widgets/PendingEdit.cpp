#include "app/widgets/PendingEdit.h"

#include <QAbstractSpinBox>
#include <QLineEdit>
#include <QPointer>

namespace orrery {

void commitPendingEdit(const QWidget& window) {
    const QPointer<QWidget> field = window.focusWidget();
    if (qobject_cast<QLineEdit*>(field) == nullptr && qobject_cast<QAbstractSpinBox*>(field) == nullptr) return;
    field->clearFocus(); // fields and cell editors hand over what they hold when they lose the focus
    if (field != nullptr && field->isVisible()) field->setFocus();
}

} // namespace orrery
