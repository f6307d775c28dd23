#include "app/widgets/NumberField.h"

#include "app/widgets/EscapeFilter.h"
#include "app/widgets/UndoPassThrough.h"
#include "platform/qt/QtText.h"
#include "platform/values/Numbers.h"

#include <QToolTip>

namespace orrery {

NumberField::NumberField(QWidget* parent) : QLineEdit(parent) {
    connect(this, &QLineEdit::editingFinished, this, &NumberField::takeTyped);
    // Queued: the focus that moves on would take the tool tip with it.
    const auto tell = [this](const QString& reason) {
        QToolTip::showText(mapToGlobal(rect().bottomLeft()), reason, this);
    };
    connect(this, &NumberField::refused, this, tell, Qt::QueuedConnection);
    letUndoPassThrough(*this);
    letEscapeDo(*this, [this] { setText(m_shown); });
}

void NumberField::showNumber(const QString& text) {
    m_shown = text;
    setText(text);
}

void NumberField::takeTyped() {
    if (text() == m_shown) return; // the focus passed through
    const TypedNumber typed = typedNumber(coreText(text()));
    if (typed.value) {
        emit numberTyped(*typed.value);
    } else {
        setText(m_shown);
        emit refused(qtText(typed.reason));
    }
}

} // namespace orrery
