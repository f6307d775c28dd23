#include "platform/qt/QtEventLoop.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <array>
#include <atomic>
#include <cerrno>
#include <clocale>
#include <csignal>

namespace orrery {
namespace {

std::atomic<int> signalPipe = -1; // writing end; the handler has nothing else

extern "C" void passSignalOn(int number) {
    const int error = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(signalPipe.load(), &byte, 1); // full: enough signals wait there
    errno = error;
}

/// Qt warns on standard error about a locale whose encoding is not UTF-8, which is no matter of ours.
std::unique_ptr<QCoreApplication> makeApplication(int& argumentCount, char** arguments) {
    const QtMessageHandler before = qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    auto application = std::make_unique<QCoreApplication>(argumentCount, arguments);
    qInstallMessageHandler(before);
    std::setlocale(LC_NUMERIC, "C"); // the application object has taken the user's
    return application;
}

} // namespace

/// Carries signals from their handler into the loop through a pipe; puts the old actions back at its end.
class QtEventLoop::Signals {
public:
    Signals(RunLoop& loop, std::function<void(int)> callback) : m_callback(std::move(callback)) {
        if (pipe2(m_ends, O_CLOEXEC | O_NONBLOCK) != 0) return; // no descriptors left: signals keep their default
        signalPipe = m_ends[1];
        m_source = loop.watchReadable(m_ends[0], [this] { deliver(); });
        for (std::size_t i = 0; i < numbers.size(); ++i)
            install(numbers[i], m_before[i]);
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals() {
        if (m_source == nullptr) return;
        for (std::size_t i = 0; i < numbers.size(); ++i)
            sigaction(numbers[i], &m_before[i], nullptr);
        m_source.reset();
        signalPipe = -1;
        close(m_ends[0]);
        close(m_ends[1]);
    }

private:
    static constexpr std::array<int, 3> numbers{SIGINT, SIGTERM, SIGHUP};

    static void install(int number, struct sigaction& before) {
        struct sigaction action {};
        action.sa_handler = passSignalOn;
        action.sa_flags = SA_RESTART;
        sigaction(number, &action, &before);
        if (number == SIGHUP && before.sa_handler == SIG_IGN) sigaction(number, &before, nullptr); // nohup
    }

    void deliver() {
        unsigned char number = 0;
        if (read(m_ends[0], &number, 1) == 1) m_callback(number);
    }

    std::function<void(int)> m_callback;
    int m_ends[2] = {-1, -1};
    std::array<struct sigaction, numbers.size()> m_before{};
    std::unique_ptr<RunLoop::Source> m_source;
};

QtEventLoop::QtEventLoop(std::string programName)
    : m_programName(std::move(programName)), m_arguments{m_programName.data(), nullptr},
      m_application(makeApplication(m_argumentCount, m_arguments)) {}

QtEventLoop::~QtEventLoop() = default;

int QtEventLoop::run() {
    return QCoreApplication::exec();
}

void QtEventLoop::quit(int code) {
    // Later: an exit before the loop runs would be lost.
    m_quitting = m_runLoop.after({}, [code] { QCoreApplication::exit(code); });
}

void QtEventLoop::onTerminationSignal(std::function<void(int)> callback) {
    m_signals = std::make_unique<Signals>(m_runLoop, std::move(callback));
}

} // namespace orrery
