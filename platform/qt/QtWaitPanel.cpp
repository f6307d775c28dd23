#include "platform/qt/QtWaitPanel.h"

#include "platform/qt/QtText.h"

#include <QCoreApplication>
#include <QEventLoop>

namespace orrery {

namespace {

constexpr qint64 showAfterMs =
    75; // and the first picture takes a moment: the window is held for a tenth of a second at most
constexpr qint64 eventsEveryMs = 40;
constexpr int wholeWork = 1000;

} // namespace

void QtWaitPanel::begin(std::string_view what) {
    m_what = qtText(what);
    m_cancelled = false;
    m_sinceEvents.start();
}

bool QtWaitPanel::update(double fractionDone) {
    if (m_sinceEvents.elapsed() < (m_panel == nullptr ? showAfterMs : eventsEveryMs)) return !m_cancelled;
    if (m_panel == nullptr) showPanel();
    m_panel->setValue(static_cast<int>(fractionDone * wholeWork));
    m_panel->show(); // a closed one comes back
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    m_sinceEvents.start();
    return !m_cancelled;
}

void QtWaitPanel::showPanel() {
    m_pause.emplace();
    m_panel = std::make_unique<QProgressDialog>(m_what, QObject::tr("Cancel"), 0, wholeWork, m_window);
    m_panel->setObjectName("waitPanel");
    m_panel->setWindowModality(Qt::ApplicationModal);
    m_panel->setAutoReset(false);
    m_panel->setAutoClose(false);
    m_panel->setMinimumDuration(0);
    QObject::disconnect(m_panel.get(), SIGNAL(canceled()), m_panel.get(), SLOT(cancel())); // which hides it
    QObject::connect(m_panel.get(), &QProgressDialog::canceled, [this] {
        m_cancelled = true;
        m_panel->setLabelText(QObject::tr("Cancelling…"));
    });
}

void QtWaitPanel::end() {
    m_panel.reset();
    m_pause.reset();
}

} // namespace orrery
