#pragma once

#include <QWidget>

namespace orrery {

/// Shows the window above the others and makes it the one that takes the keys.
inline void bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace orrery
