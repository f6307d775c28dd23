#pragma once

#include "document/MyDocument.h"

#include <QObject>

namespace orrery {

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
