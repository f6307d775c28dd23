#pragma once

class QWidget;

namespace orrery {

/// Lets the page of a window scroll where the window is smaller than what is on it. What gets the keyboard is brought
/// into sight.
void makeScrollable(QWidget& page);

} // namespace orrery
