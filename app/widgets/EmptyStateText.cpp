#include "app/widgets/EmptyStateText.h"

#include <QPainter>

namespace orrery {

void drawEmptyState(const QAbstractItemView& view, const QString& words) {
    constexpr int margin = 12;
    QPainter painter(view.viewport());
    painter.setPen(view.palette().color(QPalette::PlaceholderText));
    painter.drawText(view.viewport()->rect().adjusted(margin, margin / 2, -margin, -margin / 2),
                     Qt::AlignCenter | Qt::TextWordWrap, words);
}

} // namespace orrery
