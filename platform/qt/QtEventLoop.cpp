#include "platform/qt/QtEventLoop.h"

#include "platform/qt/FailureEdge.h"

#include <QCoreApplication>
#include <clocale>
#include <utility>

namespace orrery {
namespace {

/// Qt warns on standard error about a locale whose encoding is not UTF-8, which is no concern of ours.
std::unique_ptr<QCoreApplication> makeApplication(int& argumentCount, char** arguments) {
    const QtMessageHandler before = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    auto application = std::make_unique<QCoreApplication>(argumentCount, arguments);
    qInstallMessageHandler(before);
    std::setlocale(LC_NUMERIC, "C"); // the application object has taken the user's
    return application;
}

} // namespace

QtEventLoop::QtEventLoop(std::string programName)
    : m_programName(std::move(programName)), m_arguments{m_programName.data(), nullptr},
      m_application(makeApplication(m_argumentCount, m_arguments)) {
    setFailureHandler([this](const std::exception_ptr& failure) {
        m_failure = failure;
        QCoreApplication::exit(1);
    });
}

QtEventLoop::~QtEventLoop() {
    setFailureHandler({});
}

int QtEventLoop::run() {
    const int code = QCoreApplication::exec();
    if (m_failure) std::rethrow_exception(std::exchange(m_failure, nullptr));
    return code;
}

void QtEventLoop::quit(int code) {
    // Later: an exit before the loop runs would be lost.
    m_quitting = m_runLoop.after({}, [code] { QCoreApplication::exit(code); });
}

void QtEventLoop::onTerminationSignal(std::function<void(int)> callback) {
    m_signals = std::make_unique<TerminationSignals>(m_runLoop, std::move(callback));
}

} // namespace orrery
