#pragma once

#include "platform/UserDefaults.h"

#include <QSize>

class QMainWindow;

namespace orrery {

/// Whether windows open with the size that the last one was closed with; the user's choice, yes at first.
[[nodiscard]] bool restoresWindowLayout(const UserDefaults& defaults);
void setRestoresWindowLayout(UserDefaults& defaults, bool restores);

/// The size, or the whole of a smaller screen.
[[nodiscard]] QSize sizeOnScreen(QSize wanted);

/// Keeps the window's size and place and what its splitters give to each part.
void keepWindowLayout(const QMainWindow& window, UserDefaults& defaults);
/// Gives a window that is not shown yet what was kept, as far as it fits a screen of today. Beside other windows it
/// comes a step right and down from the one in front.
void restoreWindowLayout(QMainWindow& window, const UserDefaults& defaults);

} // namespace orrery
