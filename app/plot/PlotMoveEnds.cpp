#include "app/plot/PlotMoveEnds.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace orrery {

PlotMoveEnds::PlotMoveEnds(MyDocument& document, QObject* parent) : QObject(parent), m_document(document) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool PlotMoveEnds::eventFilter(QObject* /*watched*/, QEvent* event) {
    switch (event->type()) {
    case QEvent::KeyRelease:
        if (const auto* key = static_cast<QKeyEvent*>(event); !key->isAutoRepeat()) {
            m_release = Release{key->key(), key->timestamp()};
        }
        break;
    case QEvent::KeyPress:
        settleRelease(static_cast<QKeyEvent*>(event));
        break;
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
        settleRelease(nullptr);
        break;
    case QEvent::MouseButtonRelease:
        m_document.plot().endMove();
        break;
    default:
        break;
    }
    return false;
}

/// Before what the press moves.
void PlotMoveEnds::settleRelease(const QKeyEvent* press) {
    if (!m_release) return;
    const bool repeats = press != nullptr && press->timestamp() != 0 && press->timestamp() == m_release->timestamp &&
                         press->key() == m_release->key;
    if (!repeats) m_document.plot().endMove();
    m_release.reset();
}

} // namespace orrery
