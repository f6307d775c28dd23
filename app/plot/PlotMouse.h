#pragma once

#include "document/MyDocument.h"

#include <QObject>
#include <QPointF>

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;
class QWidget;

namespace orrery {

/// The plot by hand: dragging turns the scene and moves the eye up and down, the wheel moves the eye to and fro, a
/// double click resets; arrows, plus, minus and 0 do the same. All of it through the document's properties.
class PlotMouse : public QObject {
    Q_OBJECT

public:
    PlotMouse(MyDocument& document, QWidget& view, QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool press(const QMouseEvent& event);
    bool drag(const QMouseEvent& event);
    bool wheel(const QWheelEvent& event);
    bool key(const QKeyEvent& event);
    void turn(float degrees);
    void raiseEye(float step);
    void retreatEye(float step);

    MyDocument& m_document;
    QPointF m_last; // where the drag was seen last
};

} // namespace orrery
