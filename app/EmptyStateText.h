#pragma once

#include <QAbstractItemView>
#include <QString>

namespace orrery {

/// Draws words into a view that has nothing to show, as a field draws its placeholder.
void drawEmptyState(const QAbstractItemView& view, const QString& words);

} // namespace orrery
