#include "app/widgets/UndoPassThrough.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace orrery {

namespace {

class UndoPassThrough : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::ShortcutOverride) return false;
        auto* key = static_cast<QKeyEvent*>(event);
        const auto* field = qobject_cast<QLineEdit*>(watched);
        const bool isUndo = key->matches(QKeySequence::Undo);
        if (!isUndo && !key->matches(QKeySequence::Redo)) return false;
        if (field != nullptr && (isUndo ? field->isUndoAvailable() : field->isRedoAvailable())) return false;
        key->ignore();
        return true;
    }
};

} // namespace

void letUndoPassThrough(QWidget& field) {
    field.installEventFilter(new UndoPassThrough(&field));
}

} // namespace orrery
