#include "app/widgets/DragPicture.h"

#include <QPainter>

namespace orrery {

QPixmap dragPicture(const QWidget& source, const QString& words) {
    constexpr int widest = 280;
    constexpr int margin = 6;
    const QFontMetrics metrics = source.fontMetrics();
    const QString shown = metrics.elidedText(words, Qt::ElideLeft, widest);
    const QSize size(metrics.horizontalAdvance(shown) + 2 * margin, metrics.height() + margin);
    QPixmap picture(size * source.devicePixelRatioF());
    picture.setDevicePixelRatio(source.devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(source.palette().highlight());
    painter.drawRoundedRect(QRect(QPoint(), size), 4, 4);
    painter.setFont(source.font());
    painter.setPen(source.palette().color(QPalette::HighlightedText));
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter, shown);
    return picture;
}

} // namespace orrery
