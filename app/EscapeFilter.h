#pragma once

#include <functional>

class QWidget;

namespace orrery {

/// Escape in the field does this, and nothing else.
void letEscapeDo(QWidget& field, std::function<void()> action);

} // namespace orrery
