#include "app/plot/PlotMoveEnds.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace orrery {

PlotMoveEnds::PlotMoveEnds(MyDocument& document, QObject* parent) : QObject(parent), m_document(document) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool PlotMoveEnds::eventFilter(QObject* /*watched*/, QEvent* event) {
    const bool keyUp = event->type() == QEvent::KeyRelease && !static_cast<QKeyEvent*>(event)->isAutoRepeat();
    if (keyUp || event->type() == QEvent::MouseButtonRelease) m_document.plot().endMove();
    return false;
}

} // namespace orrery
