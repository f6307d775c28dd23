#include "platform/qt/QtWaitPanel.h"

#include "platform/qt/QtText.h"

#include <QCoreApplication>
#include <QEventLoop>

namespace orrery {

namespace {

constexpr qint64 showAfterMs = 100;
constexpr qint64 eventsEveryMs = 40;
constexpr int wholeWork = 1000;

} // namespace

void QtWaitPanel::begin(std::string_view what) {
    m_what = qtText(what);
    m_sinceEvents.start();
}

bool QtWaitPanel::update(double fractionDone) {
    if (m_sinceEvents.elapsed() < (m_panel == nullptr ? showAfterMs : eventsEveryMs)) return true;
    if (m_panel == nullptr) {
        m_pause.emplace();
        m_panel = std::make_unique<QProgressDialog>(m_what, QObject::tr("Cancel"), 0, wholeWork, m_window);
        m_panel->setObjectName("waitPanel");
        m_panel->setWindowModality(Qt::ApplicationModal);
        m_panel->setAutoReset(false);
        m_panel->setAutoClose(false);
        m_panel->setMinimumDuration(0);
        m_panel->show();
    }
    m_panel->setValue(static_cast<int>(fractionDone * wholeWork));
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    m_sinceEvents.start();
    return !m_panel->wasCanceled();
}

void QtWaitPanel::end() {
    m_panel.reset();
    m_pause.reset();
}

} // namespace orrery
