#pragma once

#include "platform/native/PosixChildProcess.h"
#include "platform/qt/QtEventLoop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orrery {

inline const std::string fakeEngine = ORRERY_BIN "/fakeEngine";

/// Runs the loop until the condition holds; false after a time that only a fault uses up.
inline bool runUntil(RunLoop& loop, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    const auto wakeUp = loop.repeat(std::chrono::milliseconds(5), [] {});
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// Whether there is no such process, not even an unreaped one.
inline bool isGone(pid_t process) {
    return kill(process, 0) != 0 && errno == ESRCH;
}

class ProcessTest : public testing::Test {
protected:
    [[nodiscard]] bool waitFor(const std::function<bool()>& condition) {
        return runUntil(m_application.runLoop(), condition);
    }

    QtEventLoop m_application{"processTest"};
    std::unique_ptr<PosixChildProcessLauncher> m_launcher =
        std::make_unique<PosixChildProcessLauncher>(m_application.runLoop());
};

} // namespace orrery
