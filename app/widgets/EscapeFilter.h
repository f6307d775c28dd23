#pragma once

#include <QtCore/qnamespace.h>

#include <functional>

class QWidget;

namespace orrery {

/// Escape in the field does this, and nothing else.
void letEscapeDo(QWidget& field, std::function<void()> action);

/// The key alone does this in the field, and nothing else.
void letKeyDo(QWidget& field, Qt::Key key, std::function<void()> action);

} // namespace orrery
