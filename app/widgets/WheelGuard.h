#pragma once

class QWidget;

namespace orrery {

/// Leaves the wheel over the control to what it scrolls in, until the control has the focus: scrolling past a chooser
/// changes nothing.
void guardFromWheel(QWidget& control);

} // namespace orrery
