#include "app/widgets/Scrollable.h"

#include <QApplication>
#include <QScrollArea>
#include <QVBoxLayout>

namespace orrery {

void makeScrollable(QWidget& page) {
    auto* area = new QScrollArea(&page);
    auto* content = new QWidget(area);
    content->setLayout(page.layout()); // which takes its widgets along
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    auto* around = new QVBoxLayout(&page);
    around->setContentsMargins(0, 0, 0, 0);
    around->addWidget(area);
    QObject::connect(qApp, &QApplication::focusChanged, area, [area, content](QWidget* /*old*/, QWidget* now) {
        if (now != nullptr && content->isAncestorOf(now)) area->ensureWidgetVisible(now);
    });
}

} // namespace orrery
