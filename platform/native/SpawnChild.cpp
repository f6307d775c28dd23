#include "platform/native/SpawnChild.h"

#include "platform/native/SystemCalls.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

namespace orrery {
namespace {

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

/// What the child needs between fork and exec, prepared before: it may allocate nothing there.
struct ChildPlan {
    pid_t parent;
    int output;
    int status;
    int descriptorLimit;
    char* const* arguments;
};

/// Keeps every signal away for the scope: a handler of ours that ran in the child would write to our own pipes.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t m_before{};
};

OrreryError startFailure(const std::string& path, int error);
void refuseUnusable(const std::vector<std::string>& command);
Pipe makePipe(const std::string& path);
[[noreturn]] void becomeProgram(const ChildPlan& plan) noexcept;

} // namespace

SpawnedChild spawnChild(const std::vector<std::string>& command) {
    refuseUnusable(command);
    Pipe output = makePipe(command[0]);
    Pipe status = makePipe(command[0]);
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const ChildPlan plan{getpid(), output.writing.get(), status.writing.get(), static_cast<int>(sysconf(_SC_OPEN_MAX)),
                         arguments.data()};

    const SignalsBlocked blocked;
    const pid_t pid = fork();
    if (pid == 0) becomeProgram(plan);
    if (pid < 0) throw startFailure(command[0], errno);
    setpgid(pid, pid); // as the child does: whoever comes first, the group exists when either goes on
    return {pid, std::move(output.reading), std::move(status.reading)};
}

std::optional<OrreryError> executionFailure(const FileDescriptor& status, const std::string& path) {
    int error = 0;
    if (read(status.get(), &error, sizeof error) != static_cast<ssize_t>(sizeof error)) return std::nullopt;
    return startFailure(path, error);
}

namespace {

const char* remedyFor(const std::string& path, int error) {
    switch (error) {
    case ENOENT:
        return access(path.c_str(), F_OK) == 0 ? "The interpreter or loader that it names is missing; install it."
                                               : "Install the engine there.";
    case EACCES:
    case EPERM:
        return "Make it an executable file that you may run.";
    case ENOEXEC:
        return "Install the engine that was built for this machine.";
    case ETXTBSY:
        return "Wait until it is no longer being written, then try again.";
    case EAGAIN:
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return "End other programs, then try again.";
    default:
        return "Check the installation of the engine.";
    }
}

OrreryError startFailure(const std::string& path, int error) {
    return OrreryError(fmt::format("The engine could not be started: {}.", systemReason(error)), {path},
                       remedyFor(path, error));
}

void refuseUnusable(const std::vector<std::string>& command) {
    if (command.empty() || command[0].empty() || command[0][0] != '/') {
        throw OrreryError("The engine could not be started: its path is not absolute.",
                          {command.empty() ? std::string() : command[0]}, "Give the whole path, from \"/\".");
    }
    for (const std::string& argument : command) {
        if (argument.find('\0') == std::string::npos) continue;
        throw OrreryError("The engine could not be started: an argument holds a NUL character.",
                          {command[0].substr(0, command[0].find('\0'))}, "Rename the file.");
    }
}

/// Above the standard descriptors, so that the child's dup2 calls overwrite neither end, whatever was closed here.
FileDescriptor aboveStandard(FileDescriptor descriptor) {
    if (descriptor.get() > STDERR_FILENO) return descriptor;
    return FileDescriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Pipe makePipe(const std::string& path) {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) throw startFailure(path, errno);
    FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    Pipe made{aboveStandard(std::move(reading)), aboveStandard(std::move(writing))};
    if (!made.reading.isOpen() || !made.writing.isOpen() || fcntl(made.reading.get(), F_SETFL, O_NONBLOCK) != 0) {
        throw startFailure(path, errno);
    }
    return made;
}

// From here on the code runs in the child of a process that may have other threads: async-signal-safe calls only.

/// By the system call, since the C library keeps two signals to itself, which a parent may have left ignored.
void resetSignalActions() noexcept {
    constexpr std::size_t kernelSetSize = 8;
    const std::array<unsigned long, 8> defaults{}; // at least the kernel's record, in which 0 is the default action
    for (int number = 1; number < NSIG; ++number)
        syscall(SYS_rt_sigaction, number, defaults.data(), nullptr, kernelSetSize);
}

bool connectStandardStreams(int output) noexcept {
    const int null = open("/dev/null", O_RDONLY);
    return null >= 0 && dup2(null, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 &&
           dup2(output, STDERR_FILENO) >= 0;
}

/// Marked rather than closed: the status pipe must live until the program is executed.
void closeOthersOnExec(int limit) noexcept {
    constexpr unsigned closeOnExec = 1U << 2U; // CLOSE_RANGE_CLOEXEC, Linux 5.11
    if (syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, closeOnExec) == 0) return;
    for (int descriptor = STDERR_FILENO + 1; descriptor < limit; ++descriptor)
        fcntl(descriptor, F_SETFD, FD_CLOEXEC);
}

void becomeProgram(const ChildPlan& plan) noexcept {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != plan.parent) _exit(127); // the parent ended before it could be watched
    resetSignalActions();
    if (connectStandardStreams(plan.output)) {
        closeOthersOnExec(plan.descriptorLimit);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        execv(plan.arguments[0], plan.arguments);
    }
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(plan.status, &error, sizeof error);
    _exit(127);
}

} // namespace
} // namespace orrery
