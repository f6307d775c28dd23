#pragma once

class QWidget;

namespace orrery {

/// The program's icon, and our own icons in place of those that the desktop's theme lacks.
void useOwnIcons();

/// In the menus of the window, icons of one colour take the text's colour where their row is highlighted: in their own
/// they would hardly be seen there.
void adaptIconsOfMenus(QWidget& window);

} // namespace orrery
