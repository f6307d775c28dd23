#pragma once

#include "platform/Outlets.h"
#include "platform/qt/QtRunLoop.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>
#include <memory>
#include <optional>

namespace orrery {

/// A progress panel on one window, shown when a wait takes longer than a tenth of a second. While it is there, the
/// application paints and takes the panel's own Cancel (or Escape); sockets and the run loops' timers stay quiet.
class QtWaitPanel : public WaitPanel {
public:
    explicit QtWaitPanel(QWidget* window) : m_window(window) {}

    void begin(std::string_view what) override;
    [[nodiscard]] bool update(double fractionDone) override;
    void end() override;

private:
    void showPanel();

    QPointer<QWidget> m_window;
    QString m_what;
    QElapsedTimer m_sinceEvents;
    bool m_cancelled = false;
    std::unique_ptr<QProgressDialog> m_panel; // stays until the end, also when cancelled: it keeps everything else out
    std::optional<QtRunLoop::Pause> m_pause;
};

} // namespace orrery
