#include "platform/native/PosixChildProcess.h"

#include "platform/native/SpawnChild.h"
#include "platform/values/OrreryError.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

namespace orrery {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t pieceSize = 65536;
constexpr auto endWait = 250ms;      // after the end of the output, until the child itself has ended, too
constexpr auto leftBehindDelay = 1s; // after the child's end, until a pipe that is still open is worth a word

/// One child from its start to the end of its output. Shared, because an event may destroy its owner while it works.
class Child : public std::enable_shared_from_this<Child> {
public:
    Child(RunLoop& loop, ChildReaper& reaper, std::string_view name)
        : m_loop(loop), m_reaper(reaper), m_program{{}, std::string(name)} {}

    void hold(std::vector<int> descriptors) { m_held = std::move(descriptors); }
    void start(const std::vector<std::string>& command, ChildProcess::Events events);
    void drain();
    void stopListening();
    void terminate();

private:
    void readPiece();
    bool deliverPiece(std::size_t limit);
    void hearGuard();
    void noteEnd(const GuardReport& report);
    void awaitEnd();
    void reportEnd();
    void deliverFailure();
    void reportLeftBehind();
    [[nodiscard]] bool knowsEnd() const { return m_end.kind != ProcessEnd::Kind::Unknown; }
    [[nodiscard]] std::size_t bytesInPipe() const;

    RunLoop& m_loop;
    ChildReaper& m_reaper;
    ChildProcess::Events m_events; // stay as they are to the end: one of them may be running
    bool m_listening = false;
    std::vector<int> m_held;
    NamedProgram m_program;
    std::string m_failure; // why the start failed, to be delivered
    ProcessEnd m_end;
    pid_t m_guard = 0; // 0: never started, or the reaper has it
    FileDescriptor m_output;
    std::shared_ptr<FileDescriptor> m_control = std::make_shared<FileDescriptor>(); // the reaper needs it, too
    std::unique_ptr<RunLoop::Source> m_outputSource;
    std::unique_ptr<RunLoop::Source> m_controlSource;
    std::unique_ptr<RunLoop::Source> m_waiting; // for the child's end after its output's, or the other way round
};

std::string failureLine(const OrreryError& error) {
    return std::string(error.what()) + "\n";
}

ProcessEnd endOf(int status) {
    if (WIFSIGNALED(status)) return {ProcessEnd::Kind::Signalled, WTERMSIG(status)};
    return {ProcessEnd::Kind::Exited, WEXITSTATUS(status)};
}

void Child::start(const std::vector<std::string>& command, ChildProcess::Events events) {
    m_events = std::move(events);
    m_listening = true;
    try {
        SpawnedChild spawned = spawnChild(command, m_program.name, m_held);
        m_program.path = command[0];
        m_guard = spawned.guard;
        m_output = std::move(spawned.output);
        *m_control = std::move(spawned.control);
    } catch (const OrreryError& error) {
        m_failure = failureLine(error);
        m_end = {ProcessEnd::Kind::NotStarted, 0};
        m_outputSource = m_loop.after(0ns, [this] { reportEnd(); });
        return;
    }
    m_outputSource = m_loop.watchReadable(m_output.get(), [this] { readPiece(); });
    m_controlSource = m_loop.watchReadable(m_control->get(), [this] { hearGuard(); });
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

void Child::hearGuard() {
    if (const auto report = nextReport(*m_control)) {
        noteEnd(*report);
        if (m_waiting == nullptr) m_waiting = m_loop.repeat(leftBehindDelay, [this] { reportLeftBehind(); });
    } else {
        m_controlSource.reset(); // the guard is gone: nothing of the run lives, or somebody killed it
    }
    if (m_outputSource == nullptr) reportEnd();
}

void Child::noteEnd(const GuardReport& report) {
    if (knowsEnd()) return;
    if (report.kind == GuardReport::Kind::NotStarted) {
        m_failure = failureLine(startFailure(m_program, report.number));
        m_end = {ProcessEnd::Kind::NotStarted, 0};
    } else {
        m_end = endOf(report.number);
    }
}

/// A program's descriptors are closed a moment before it has ended, and how it did is known only then.
void Child::awaitEnd() {
    m_outputSource.reset();
    if (knowsEnd() || m_controlSource == nullptr) {
        reportEnd();
    } else {
        m_waiting = m_loop.after(endWait, [this] { reportEnd(); });
    }
}

void Child::reportEnd() {
    const auto keep = shared_from_this();
    m_outputSource.reset();
    m_controlSource.reset();
    m_waiting.reset();
    deliverFailure();
    if (m_listening && knowsEnd() && m_events.ended != nullptr) m_events.ended(m_end);
    if (std::exchange(m_listening, false)) m_events.endOfOutput();
}

void Child::deliverFailure() {
    const std::string line = std::exchange(m_failure, {});
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
    while (const auto report = nextReport(*m_control))
        noteEnd(*report);
    if (m_listening) deliverFailure();
}

void Child::stopListening() {
    m_listening = false;
    m_outputSource.reset();
    m_controlSource.reset();
    m_waiting.reset();
}

void Child::terminate() {
    if (m_guard == 0) return;
    // Whoever still listens hears the end of the output, which comes when the last that holds it has been ended.
    m_reaper.end(std::exchange(m_guard, 0), m_control, m_listening ? FileDescriptor() : std::move(m_output));
}

void Child::reportLeftBehind() {
    if (bytesInPipe() > 0) return; // still being read: look again later
    const auto keep = shared_from_this();
    m_waiting.reset();
    if (m_events.left == nullptr) return;
    m_events.left(fmt::format("{}: The {} has ended, but something that it left behind still holds its output open. "
                              "Abort the run to end it.",
                              m_program.path, m_program.name));
}

std::size_t Child::bytesInPipe() const {
    int held = 0;
    return m_output.isOpen() && ioctl(m_output.get(), FIONREAD, &held) == 0 ? static_cast<std::size_t>(held) : 0;
}

class PosixChildProcess : public ChildProcess {
public:
    PosixChildProcess(RunLoop& loop, ChildReaper& reaper, std::string_view name)
        : m_child(std::make_shared<Child>(loop, reaper, name)) {}
    PosixChildProcess(const PosixChildProcess&) = delete;
    PosixChildProcess& operator=(const PosixChildProcess&) = delete;
    ~PosixChildProcess() override {
        m_child->stopListening();
        m_child->terminate();
    }

    void hold(std::vector<int> descriptors) override { m_child->hold(std::move(descriptors)); }
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

std::unique_ptr<ChildProcess> PosixChildProcessLauncher::makeChildProcess(std::string_view name) {
    return std::make_unique<PosixChildProcess>(m_loop, m_reaper, name);
}

} // namespace orrery
