#include "app/widgets/ElidedLabel.h"

#include "platform/qt/QtElision.h"

#include <QPainter>
#include <QStyle>

namespace orrery {

QSize ElidedLabel::minimumSizeHint() const {
    constexpr int fewCharacters = 6;
    return {fontMetrics().averageCharWidth() * fewCharacters, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QString shown = elidedName(text(), fontMetrics(), contentsRect().width());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment() | Qt::TextSingleLine), palette(),
                          isEnabled(), shown, foregroundRole());
}

} // namespace orrery
