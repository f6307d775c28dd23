#include "platform/native/PosixChildProcess.h"

#include "platform/OrreryError.h"
#include "platform/native/SpawnChild.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

namespace orrery {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t pieceSize = 65536;
constexpr auto endLookInterval = 2ms;
constexpr ProcessEnd notStarted{ProcessEnd::Kind::NotStarted, 0};
constexpr auto exitLookInterval = 250ms; // where the system cannot watch a process
constexpr auto endWait = 250ms;          // after the end of the output, until the child itself has ended, too
constexpr auto leftBehindDelay = 1s;     // after the exit, until a pipe that is still open is worth a word

/// One child from its start to the end of its output. Shared, because an event may destroy its owner while it works.
class Child : public std::enable_shared_from_this<Child> {
public:
    Child(RunLoop& loop, ChildReaper& reaper) : m_loop(loop), m_reaper(reaper) {}

    void start(const std::vector<std::string>& command, ChildProcess::Events events);
    void drain();
    void stopListening();
    void terminate();

private:
    void readPiece();
    bool deliverPiece(std::size_t limit);
    void deliverFailure();
    void awaitEnd();
    void reportEnd();
    void watchExit();
    void noteExit();
    void reportLeftBehind();
    [[nodiscard]] std::size_t bytesInPipe() const;

    RunLoop& m_loop;
    ChildReaper& m_reaper;
    ChildProcess::Events m_events; // stay as they are to the end: one of them may be running
    bool m_listening = false;
    std::string m_path;
    std::string m_failure; // why the start failed, to be delivered
    bool m_failed = false;
    pid_t m_pid = 0;
    bool m_handedOver = false; // the reaper has the child
    FileDescriptor m_output;
    FileDescriptor m_status;
    FileDescriptor m_exitDescriptor;
    std::unique_ptr<RunLoop::Source> m_outputSource;
    std::unique_ptr<RunLoop::Source> m_exitSource; // first for the exit, then for what was left behind
};

std::string failureLine(const OrreryError& error) {
    return std::string(error.what()) + "\n";
}

void Child::start(const std::vector<std::string>& command, ChildProcess::Events events) {
    m_events = std::move(events);
    m_listening = true;
    try {
        SpawnedChild spawned = spawnChild(command);
        m_path = command[0];
        m_pid = spawned.pid;
        m_output = std::move(spawned.output);
        m_status = std::move(spawned.status);
    } catch (const OrreryError& error) {
        m_failure = failureLine(error);
        m_outputSource = m_loop.after(0ns, [this] { reportEnd(); });
        return;
    }
    m_outputSource = m_loop.watchReadable(m_output.get(), [this] { readPiece(); });
    watchExit();
}

void Child::readPiece() {
    const auto keep = shared_from_this();
    if (!deliverPiece(pieceSize) && errno != EAGAIN && errno != EINTR) awaitEnd();
}

/// Reads once; false at the end (errno 0) or when nothing could be read.
bool Child::deliverPiece(std::size_t limit) {
    const auto buffer = std::make_unique_for_overwrite<std::byte[]>(limit);
    errno = 0;
    const ssize_t count = read(m_output.get(), buffer.get(), limit);
    if (count <= 0) return false;
    m_events.output({buffer.get(), static_cast<std::size_t>(count)});
    return true;
}

/// A program's descriptors are closed a moment before it has ended, and how it did is told only then.
void Child::awaitEnd() {
    if (hasEnded(m_pid)) {
        reportEnd();
        return;
    }
    const auto deadline = std::chrono::steady_clock::now() + endWait;
    m_outputSource = m_loop.repeat(endLookInterval, [this, deadline] {
        if (hasEnded(m_pid) || std::chrono::steady_clock::now() >= deadline) reportEnd();
    });
}

void Child::reportEnd() {
    const auto keep = shared_from_this();
    m_outputSource.reset();
    m_exitSource.reset();
    deliverFailure();
    if (m_listening && m_events.ended != nullptr) m_events.ended(m_failed ? notStarted : endOf(m_pid));
    if (std::exchange(m_listening, false)) m_events.endOfOutput();
}

void Child::deliverFailure() {
    if (m_status.isOpen()) {
        if (const auto failure = executionFailure(m_status, m_path)) m_failure = failureLine(*failure);
    }
    const std::string line = std::exchange(m_failure, {});
    if (!line.empty()) m_failed = true;
    if (m_listening && !line.empty()) m_events.output(std::as_bytes(std::span(line)));
}

void Child::drain() {
    if (!m_listening) return;
    const auto keep = shared_from_this();
    std::size_t held = bytesInPipe(); // counted once: what a flooding child writes meanwhile is not waited for
    while (m_listening && held > 0) {
        const std::size_t size = std::min(held, pieceSize);
        if (!deliverPiece(size)) break;
        held -= size;
    }
    if (m_listening) deliverFailure();
}

void Child::stopListening() {
    m_listening = false;
    m_outputSource.reset();
    m_exitSource.reset();
    m_exitDescriptor.reset();
}

void Child::terminate() {
    if (m_pid == 0 || std::exchange(m_handedOver, true)) return;
    m_reaper.end(m_pid, m_listening ? FileDescriptor() : std::move(m_output));
}

void Child::watchExit() {
    m_exitDescriptor = FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0)));
    if (m_exitDescriptor.isOpen()) {
        m_exitSource = m_loop.watchReadable(m_exitDescriptor.get(), [this] { noteExit(); });
    } else {
        m_exitSource = m_loop.repeat(exitLookInterval, [this] {
            if (hasEnded(m_pid)) noteExit();
        });
    }
}

void Child::noteExit() {
    m_exitSource = m_loop.repeat(leftBehindDelay, [this] { reportLeftBehind(); });
    m_exitDescriptor.reset();
}

void Child::reportLeftBehind() {
    if (bytesInPipe() > 0) return; // still being read: look again later
    const auto keep = shared_from_this();
    m_exitSource.reset();
    if (m_events.left == nullptr) return;
    m_events.left(fmt::format("{}: The engine has ended, but something that it left behind still holds its output. "
                              "Abort the run to end it.",
                              m_path));
}

std::size_t Child::bytesInPipe() const {
    int held = 0;
    return m_output.isOpen() && ioctl(m_output.get(), FIONREAD, &held) == 0 ? static_cast<std::size_t>(held) : 0;
}

class PosixChildProcess : public ChildProcess {
public:
    PosixChildProcess(RunLoop& loop, ChildReaper& reaper) : m_child(std::make_shared<Child>(loop, reaper)) {}
    PosixChildProcess(const PosixChildProcess&) = delete;
    PosixChildProcess& operator=(const PosixChildProcess&) = delete;
    ~PosixChildProcess() override {
        m_child->stopListening();
        m_child->terminate();
    }

    void start(const std::vector<std::string>& command, Events events) override {
        m_child->start(command, std::move(events));
    }
    void drain() override { m_child->drain(); }
    void stopListening() override { m_child->stopListening(); }
    void terminate() override { m_child->terminate(); }

private:
    std::shared_ptr<Child> m_child;
};

} // namespace

PosixChildProcessLauncher::PosixChildProcessLauncher(RunLoop& loop) : m_loop(loop), m_reaper(loop) {
    // A program that was started with SIGCHLD ignored would have its children reaped behind its back.
    struct sigaction action {};
    if (sigaction(SIGCHLD, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) std::signal(SIGCHLD, SIG_DFL);
}

std::unique_ptr<ChildProcess> PosixChildProcessLauncher::makeChildProcess() {
    return std::make_unique<PosixChildProcess>(m_loop, m_reaper);
}

} // namespace orrery
