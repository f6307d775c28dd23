#pragma once

#include "platform/UserDefaults.h"

class QWidget;

namespace orrery {

/// The size in points that the engine's text is shown in; the user's choice, at first that of the desktop.
[[nodiscard]] int logFontSize(const UserDefaults& defaults);
void setLogFontSize(UserDefaults& defaults, int points);
/// Gives the view the size; it keeps its font otherwise.
void applyLogFontSize(QWidget& view, const UserDefaults& defaults);

} // namespace orrery
