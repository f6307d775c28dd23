#pragma once

class QWidget;

namespace orrery {

/// Takes over what is being typed into a field or cell of the window, as leaving it would. The focus stays in a field.
void commitPendingEdit(const QWidget& window);

} // namespace orrery
