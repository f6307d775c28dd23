#pragma once

class QWidget;

namespace orrery {

/// Shows name, version, licence and libraries, as a sheet of the window.
void beginAboutBox(QWidget* window);

} // namespace orrery
