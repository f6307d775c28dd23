#pragma once

#include "document/MyDocument.h"

#include <QObject>
#include <functional>

namespace orrery {

/// A choice of the user that builds the document's plot: a step of undo, guarded as guardedPlot does.
void changePlotGuarded(MyDocument& document, PlotControl control, const std::function<void()>& change);

/// What every command does that puts the camera back.
void resetCameraByHand(MyDocument& document);

/// Tells the document that a control was let go when any key or mouse button is: what moves after that is a step of
/// its own.
class PlotMoveEnds : public QObject {
    Q_OBJECT

public:
    PlotMoveEnds(MyDocument& document, QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    MyDocument& m_document;
};

} // namespace orrery
