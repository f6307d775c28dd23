#pragma once

#include <functional>
#include <string>

class QWidget;

namespace orrery {

/// Saves a picture (PNG) of the window as soon as it is on the screen, then calls back with the empty text or with why
/// it could not be saved.
void takeWindowPicture(QWidget& window, const std::string& path, std::function<void(std::string)> taken);

} // namespace orrery
