#pragma once

#include <QPixmap>
#include <QString>
#include <QWidget>

namespace orrery {

/// The small label that follows the mouse while something is dragged.
[[nodiscard]] QPixmap dragPicture(const QWidget& source, const QString& words);

} // namespace orrery
