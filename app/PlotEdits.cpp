#include "app/PlotEdits.h"

#include "app/GuardedPlot.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace orrery {

void changePlotGuarded(MyDocument& document, PlotControl control, const std::function<void()>& change) {
    document.changePlot(control, [&] { guardedPlot(document, change); });
}

void resetCameraByHand(MyDocument& document) {
    document.changePlot({PlotAct::ResetCamera}, [&document] { document.resetCamera(); });
}

PlotMoveEnds::PlotMoveEnds(MyDocument& document, QObject* parent) : QObject(parent), m_document(document) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool PlotMoveEnds::eventFilter(QObject* /*watched*/, QEvent* event) {
    const bool keyUp = event->type() == QEvent::KeyRelease && !static_cast<QKeyEvent*>(event)->isAutoRepeat();
    if (keyUp || event->type() == QEvent::MouseButtonRelease) m_document.endPlotMove();
    return false;
}

} // namespace orrery
