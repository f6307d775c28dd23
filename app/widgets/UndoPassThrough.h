#pragma once

class QWidget;

namespace orrery {

/// Lets the undo and redo keys through to the document's commands while the field itself has nothing to undo or redo.
/// A field that cannot tell, such as a date's, keeps none for itself.
void letUndoPassThrough(QWidget& field);

} // namespace orrery
