#include "platform/native/SpawnChild.h"

#include "platform/Files.h"
#include "platform/guard/InheritedState.h"
#include "platform/native/SystemCalls.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

namespace orrery {
namespace {

struct Ends {
    FileDescriptor ours;
    FileDescriptor theirs;
};

/// What the child needs between fork and exec, prepared before: it may allocate nothing there.
struct GuardPlan {
    const char* path;
    std::vector<char*> words;
    std::vector<int> inherited;
    int control;
    int descriptorLimit;
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

void refuseUnusable(const std::vector<std::string>& command);
std::string guardPath(const std::string& path);
Ends makePipe(const std::string& path);
Ends makeControl(const std::string& path);
FileDescriptor commandFile(const std::vector<std::string>& command);
[[noreturn]] void becomeGuard(const GuardPlan& plan) noexcept;

} // namespace

SpawnedChild spawnChild(const std::vector<std::string>& command, const std::vector<int>& held) {
    refuseUnusable(command);
    Ends output = makePipe(command[0]);
    Ends control = makeControl(command[0]);
    const FileDescriptor words = commandFile(command);
    const std::string program = guardPath(command[0]);
    std::array arguments{std::string(runGuardName), std::to_string(control.theirs.get()), std::to_string(words.get()),
                         std::to_string(output.theirs.get())};
    GuardPlan plan{program.c_str(), {}, held, control.theirs.get(), static_cast<int>(sysconf(_SC_OPEN_MAX))};
    for (std::string& argument : arguments)
        plan.words.push_back(argument.data());
    plan.words.push_back(nullptr);
    plan.inherited.insert(plan.inherited.end(), {control.theirs.get(), words.get(), output.theirs.get()});

    const SignalsBlocked blocked;
    const pid_t pid = fork();
    if (pid == 0) becomeGuard(plan);
    if (pid < 0) throw startFailure(command[0], errno);
    return {pid, std::move(output.ours), std::move(control.ours)};
}

std::optional<GuardReport> nextReport(const FileDescriptor& control) {
    GuardReport report;
    const ssize_t count = uninterrupted([&] { return recv(control.get(), &report, sizeof report, MSG_DONTWAIT); });
    return count == static_cast<ssize_t>(sizeof report) ? std::optional(report) : std::nullopt;
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

} // namespace

OrreryError startFailure(const std::string& path, int error) {
    return OrreryError(fmt::format("The engine could not be started: {}.", systemReason(error)), {path},
                       remedyFor(path, error));
}

namespace {

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

std::string guardPath(const std::string& path) {
    if (std::optional<std::string> found = pathForAuxiliaryExecutable(runGuardName)) return *found;
    throw OrreryError(fmt::format("The engine could not be started: {} is not beside Orrery's programs.", runGuardName),
                      {path}, "Install Orrery again.");
}

/// Above the standard descriptors, which the child gives other meanings, whatever was closed here.
FileDescriptor aboveStandard(FileDescriptor descriptor) {
    if (!descriptor.isOpen() || descriptor.get() > STDERR_FILENO) return descriptor;
    return FileDescriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Ends placed(const std::array<int, 2>& ends, const std::string& path) {
    FileDescriptor first(ends[0]);
    FileDescriptor second(ends[1]);
    Ends made{aboveStandard(std::move(first)), aboveStandard(std::move(second))};
    if (!made.ours.isOpen() || !made.theirs.isOpen() || fcntl(made.ours.get(), F_SETFL, O_NONBLOCK) != 0) {
        throw startFailure(path, errno);
    }
    return made;
}

Ends makePipe(const std::string& path) {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw startFailure(path, errno);
    return placed(ends, path);
}

Ends makeControl(const std::string& path) {
    std::array<int, 2> ends{-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) throw startFailure(path, errno);
    return placed(ends, path);
}

/// No arguments of the guard's: nobody who looks for the engine by its words shall find the guard, and the system's
/// limit on a program's arguments holds for the engine alone.
FileDescriptor commandFile(const std::vector<std::string>& command) {
    FileDescriptor file = aboveStandard(FileDescriptor(memfd_create("command", MFD_CLOEXEC)));
    if (!file.isOpen()) throw startFailure(command[0], errno);
    for (const std::string& word : command) {
        const std::size_t size = word.size() + 1;
        if (write(file.get(), word.c_str(), size) != static_cast<ssize_t>(size)) throw startFailure(command[0], errno);
    }
    return file;
}

// From here on the code runs in the child of a process that may have other threads: async-signal-safe calls only.

bool connectStandardStreams() noexcept {
    const int null = open("/dev/null", O_RDWR);
    return null >= 0 && dup2(null, STDIN_FILENO) >= 0 && dup2(null, STDOUT_FILENO) >= 0 &&
           dup2(null, STDERR_FILENO) >= 0;
}

void becomeGuard(const GuardPlan& plan) noexcept {
    setpgid(0, 0);
    if (connectStandardStreams()) {
        closeOthersOnExec(plan.descriptorLimit);
        for (const int descriptor : plan.inherited)
            fcntl(descriptor, F_SETFD, 0);
        execv(plan.path, plan.words.data());
    }
    const GuardReport failure{GuardReport::Kind::NotStarted, errno};
    send(plan.control, &failure, sizeof failure, MSG_NOSIGNAL);
    _exit(127);
}

} // namespace
} // namespace orrery
