#pragma once

#include "document/MyDocument.h"

#include <QObject>
#include <optional>

class QKeyEvent;

namespace orrery {

/// Tells the document that a control was let go when any key or mouse button is: what moves after that is a step of
/// its own.
///
/// A held key comes from the display as releases, each with a press at the same instant. Qt takes the two for a
/// repetition only when both are there when it reads the first; so a release counts once something else has come.
class PlotMoveEnds : public QObject {
    Q_OBJECT

public:
    PlotMoveEnds(MyDocument& document, QObject* parent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Release {
        int key = 0;
        quint64 timestamp = 0;
    };
    void settleRelease(const QKeyEvent* press);

    MyDocument& m_document;
    std::optional<Release> m_release; // that does not count yet
};

} // namespace orrery
