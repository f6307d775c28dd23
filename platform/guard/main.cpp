// Stands between an owner and the program that it runs, so that nothing of the run outlives either the run or its
// owner.
//
// It starts the program and takes in whatever that leaves behind, also work that went into a session of its own. When
// it is told to, or when its owner is gone, however that ended, it ends all of that. Until then it keeps open what it
// inherited: a lock of the run's is given back when the last process that could write what it guards has gone.
// No signal but SIGKILL reaches it: those meant for the terminal's or the program's group are not for it.

#include "platform/guard/Descendants.h"
#include "platform/guard/GuardProtocol.h"
#include "platform/guard/InheritedState.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace orrery {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto gracePeriod = 2s;
constexpr auto orphanGracePeriod = 500ms; // when the owner is gone, so that a program can still clear its files away
constexpr auto killInterval = 10ms;       // a killed process may have left children that nobody has seen yet

struct Inherited {
    int control;
    int command;
    int output;
    int descriptorLimit;
};

void report(int control, GuardReport::Kind kind, int number) noexcept {
    const GuardReport message{kind, number};
    send(control, &message, sizeof message, MSG_NOSIGNAL | MSG_DONTWAIT);
}

/// Blocks everything, so that a child's end is read from the returned descriptor and nothing else interrupts.
int watchChildren() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    sigset_t childEnds;
    sigemptyset(&childEnds);
    sigaddset(&childEnds, SIGCHLD);
    return signalfd(-1, &childEnds, SFD_NONBLOCK | SFD_CLOEXEC);
}

/// The command's bytes, each word closed by a NUL; empty when they cannot be read whole.
std::string readCommand(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0) return {};
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    const ssize_t count = pread(file, bytes.data(), bytes.size(), 0);
    return count == status.st_size ? bytes : std::string();
}

std::vector<char*> wordsOf(std::string& command) {
    std::vector<char*> words;
    for (std::size_t at = 0; at < command.size(); at = command.find('\0', at) + 1)
        words.push_back(command.data() + at);
    words.push_back(nullptr);
    return words;
}

[[noreturn]] void becomeProgram(const Inherited& inherited, char* const* words, pid_t guard) noexcept {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != guard) _exit(127);
    if (dup2(inherited.output, STDOUT_FILENO) >= 0 && dup2(inherited.output, STDERR_FILENO) >= 0) {
        closeOthersOnExec(inherited.descriptorLimit);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        execv(words[0], words);
    }
    report(inherited.control, GuardReport::Kind::NotStarted, errno);
    _exit(127);
}

/// @return the program's process, or -1 after its failure was reported
pid_t startProgram(const Inherited& inherited) {
    std::string command = readCommand(inherited.command);
    const std::vector<char*> words = wordsOf(command);
    const pid_t guard = getpid();
    const pid_t program = command.empty() ? -1 : fork();
    if (program == 0) becomeProgram(inherited, words.data(), guard);
    if (program < 0) report(inherited.control, GuardReport::Kind::NotStarted, errno);
    close(inherited.command);
    close(inherited.output); // from now on its end is the program's
    return program;
}

/// Waits until nothing of the run is left.
class Watch {
public:
    Watch(int control, int childEnds, pid_t program) : m_control(control), m_childEnds(childEnds), m_program(program) {}

    void run() {
        while (reapEnded()) {
            if (m_killTime && Clock::now() >= *m_killTime) endByForce();
            await();
        }
    }

private:
    /// @return false when there is no child left
    bool reapEnded() {
        int status = 0;
        pid_t child = waitpid(-1, &status, WNOHANG);
        for (; child > 0; child = waitpid(-1, &status, WNOHANG)) {
            if (child != m_program) continue;
            report(m_control, GuardReport::Kind::Ended, status);
            m_program = -1;
        }
        return child == 0;
    }

    void await() {
        std::array<pollfd, 2> watched{pollfd{m_childEnds, POLLIN, 0}, pollfd{m_control, POLLIN, 0}};
        if (poll(watched.data(), m_control < 0 ? 1 : 2, timeoutMs()) <= 0) return;
        std::array<signalfd_siginfo, 8> heard{};
        while (read(m_childEnds, heard.data(), sizeof heard) > 0) {
        }
        if (m_control >= 0 && watched[1].revents != 0) readOrder();
    }

    [[nodiscard]] int timeoutMs() const {
        if (!m_killTime) return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*m_killTime - Clock::now());
        return static_cast<int>(std::max(left, killInterval).count());
    }

    void readOrder() {
        GuardOrder order{};
        const ssize_t count = recv(m_control, &order, sizeof order, MSG_DONTWAIT);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
        if (count <= 0) {
            close(m_control);
            m_control = -1;
            askToEnd(orphanGracePeriod);
        } else {
            askToEnd(order == GuardOrder::Kill ? Clock::duration::zero() : gracePeriod);
        }
    }

    void askToEnd(Clock::duration grace) {
        const auto killTime = Clock::now() + grace;
        if (!m_killTime) {
            signalAll(SIGTERM);
            signalAll(SIGCONT); // a stopped process does not see SIGTERM
        }
        m_killTime = m_killTime ? std::min(*m_killTime, killTime) : killTime;
    }

    void endByForce() { signalAll(SIGKILL); }

    void signalAll(int signal) const {
        if (!signalDescendants(signal) && m_program > 0) kill(-m_program, signal);
    }

    int m_control; // -1: the owner is gone
    int m_childEnds;
    pid_t m_program; // -1: reaped
    std::optional<Clock::time_point> m_killTime;
};

int guard(const Inherited& inherited) {
    resetSignalActions();
    closeOthersOnExec(inherited.descriptorLimit);
    const int childEnds = watchChildren();
    if (childEnds < 0 || prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) {
        report(inherited.control, GuardReport::Kind::NotStarted, errno);
        return 1;
    }
    Watch(inherited.control, childEnds, startProgram(inherited)).run();
    return 0;
}

} // namespace
} // namespace orrery

int main(int count, char** words) {
    if (count != 4) return 2; // Orrery's programs start it
    _exit(orrery::guard({std::atoi(words[1]), std::atoi(words[2]), std::atoi(words[3]),
                         static_cast<int>(sysconf(_SC_OPEN_MAX))})); // no leak check's process of its own at the exit
}
