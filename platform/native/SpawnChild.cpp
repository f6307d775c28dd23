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
#include <string_view>

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

void refuseUnusable(const std::vector<std::string>& command, const std::string& name);
std::string guardPath(const NamedProgram& program);
Ends makePipe(const NamedProgram& program);
Ends makeControl(const NamedProgram& program);
FileDescriptor commandFile(const NamedProgram& program, const std::vector<std::string>& command);
[[noreturn]] void becomeGuard(const GuardPlan& plan) noexcept;

} // namespace

SpawnedChild spawnChild(const std::vector<std::string>& command, const std::string& name,
                        const std::vector<int>& held) {
    refuseUnusable(command, name);
    const NamedProgram program{command[0], name};
    Ends output = makePipe(program);
    Ends control = makeControl(program);
    const FileDescriptor words = commandFile(program, command);
    const std::string guard = guardPath(program);
    std::array arguments{std::string(runGuardName), std::to_string(control.theirs.get()), std::to_string(words.get()),
                         std::to_string(output.theirs.get())};
    GuardPlan plan{guard.c_str(), {}, held, control.theirs.get(), static_cast<int>(sysconf(_SC_OPEN_MAX))};
    for (std::string& argument : arguments)
        plan.words.push_back(argument.data());
    plan.words.push_back(nullptr);
    plan.inherited.insert(plan.inherited.end(), {control.theirs.get(), words.get(), output.theirs.get()});

    const SignalsBlocked blocked;
    const pid_t pid = fork();
    if (pid == 0) becomeGuard(plan);
    if (pid < 0) throw startFailure(program, errno);
    return {pid, std::move(output.ours), std::move(control.ours)};
}

std::optional<GuardReport> nextReport(const FileDescriptor& control) {
    GuardReport report;
    const ssize_t count = uninterrupted([&] { return recv(control.get(), &report, sizeof report, MSG_DONTWAIT); });
    return count == static_cast<ssize_t>(sizeof report) ? std::optional(report) : std::nullopt;
}

namespace {

OrreryError notStarted(const NamedProgram& program, std::string_view reason, const std::string& remedy) {
    return OrreryError(fmt::format("The {} could not be started: {}.", program.name, reason), {program.path}, remedy);
}

std::string remedyFor(const NamedProgram& program, int error) {
    switch (error) {
    case ENOENT:
        return access(program.path.c_str(), F_OK) == 0
                   ? "The interpreter or loader that it names is missing; install it."
                   : fmt::format("Install the {} there.", program.name);
    case EACCES:
    case EPERM:
        return "Make it an executable file that you may run.";
    case ENOEXEC:
        return fmt::format("Install the {} that was built for this machine.", program.name);
    case ETXTBSY:
        return "Wait until it is no longer being written, then try again.";
    case EAGAIN:
    case ENOMEM:
    case EMFILE:
    case ENFILE:
        return "End other programs, then try again.";
    default:
        return fmt::format("Check the installation of the {}.", program.name);
    }
}

} // namespace

OrreryError startFailure(const NamedProgram& program, int error) {
    return notStarted(program, systemReason(error), remedyFor(program, error));
}

namespace {

void refuseUnusable(const std::vector<std::string>& command, const std::string& name) {
    if (command.empty() || command[0].empty() || command[0][0] != '/') {
        const std::string path = command.empty() ? std::string() : command[0];
        throw notStarted({path, name}, "its path is not absolute", "Give the whole path, from \"/\".");
    }
    for (const std::string& argument : command) {
        if (argument.find('\0') == std::string::npos) continue;
        const std::string path = command[0].substr(0, command[0].find('\0'));
        throw notStarted({path, name}, "an argument holds a NUL character", "Rename the file.");
    }
}

std::string guardPath(const NamedProgram& program) {
    if (std::optional<std::string> found = pathForAuxiliaryExecutable(runGuardName)) return *found;
    throw notStarted(program, fmt::format("{} is not beside Orrery's programs", runGuardName), "Install Orrery again.");
}

/// Above the standard descriptors, which the child gives other meanings, whatever was closed here.
FileDescriptor aboveStandard(FileDescriptor descriptor) {
    if (!descriptor.isOpen() || descriptor.get() > STDERR_FILENO) return descriptor;
    return FileDescriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Ends placed(const std::array<int, 2>& ends, const NamedProgram& program) {
    FileDescriptor first(ends[0]);
    FileDescriptor second(ends[1]);
    Ends made{aboveStandard(std::move(first)), aboveStandard(std::move(second))};
    if (!made.ours.isOpen() || !made.theirs.isOpen() || fcntl(made.ours.get(), F_SETFL, O_NONBLOCK) != 0) {
        throw startFailure(program, errno);
    }
    return made;
}

Ends makePipe(const NamedProgram& program) {
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw startFailure(program, errno);
    return placed(ends, program);
}

Ends makeControl(const NamedProgram& program) {
    std::array<int, 2> ends{-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) throw startFailure(program, errno);
    return placed(ends, program);
}

/// No arguments of the guard's: nobody who looks for the child by its words shall find the guard, and the system's
/// limit on a program's arguments holds for the child alone.
FileDescriptor commandFile(const NamedProgram& program, const std::vector<std::string>& command) {
    FileDescriptor file = aboveStandard(FileDescriptor(memfd_create("command", MFD_CLOEXEC)));
    if (!file.isOpen()) throw startFailure(program, errno);
    for (const std::string& word : command) {
        const std::size_t size = word.size() + 1;
        if (write(file.get(), word.c_str(), size) != static_cast<ssize_t>(size)) throw startFailure(program, errno);
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
