#include "app/plot/RunStateWords.h"

#include "platform/Calendar.h"
#include "platform/qt/QtText.h"

#include <QObject>
#include <QStyle>

namespace orrery {

QString runStateText(const RunControl& run) {
    switch (run.state()) {
    case RunControl::State::Waiting:
        return QObject::tr("Waiting for another run to end");
    case RunControl::State::Ending:
        return QObject::tr("Ending the earlier run");
    case RunControl::State::Running:
        return QObject::tr("Running");
    case RunControl::State::Idle:
        break;
    }
    return qtText(outcomeText(run.outcome(), currentDate()));
}

QIcon runStateIcon(const RunControl& run, const QStyle& style) {
    if (run.state() != RunControl::State::Idle) return QIcon::fromTheme("media-playback-start");
    switch (run.outcome().kind) {
    case RunOutcome::Kind::Results:
        return style.standardIcon(run.outcome().isWhole() ? QStyle::SP_DialogApplyButton
                                                          : QStyle::SP_MessageBoxWarning);
    case RunOutcome::Kind::Failed:
        return style.standardIcon(QStyle::SP_MessageBoxCritical);
    case RunOutcome::Kind::Aborted:
        return QIcon::fromTheme("media-playback-stop");
    case RunOutcome::Kind::None:
        break;
    }
    return {};
}

} // namespace orrery
