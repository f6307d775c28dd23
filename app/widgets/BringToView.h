#pragma once

class QWidget;

namespace orrery {

/// Has all that scrolls around the control show it, and gives it the keyboard if wanted.
void bringToView(QWidget& control, bool withKeyboard);

} // namespace orrery
