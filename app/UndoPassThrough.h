#pragma once

class QWidget;

namespace orrery {

/// Lets the undo and redo keys through to the document's commands while the field itself has nothing to undo or redo.
/// A field that cannot tell, such as a date's, keeps none for itself.
void letUndoPassThrough(QWidget& field);

/// Takes over what is being typed into a field or cell of the window, as leaving it would. The focus stays in a field.
void commitPendingEdit(const QWidget& window);

} // namespace orrery
