#pragma once

#include <QAbstractItemView>
#include <QString>

namespace orrery {

/// Draws words in the middle of a view that has nothing to show, in the pale colour of hints.
void drawEmptyState(const QAbstractItemView& view, const QString& words);

} // namespace orrery
