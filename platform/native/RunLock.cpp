#include "platform/OrreryError.h"
#include "platform/TemporaryDirectory.h"
#include "platform/native/FileDescriptor.h"
#include "platform/native/SystemCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <string_view>
#include <utility>

namespace orrery {
namespace {

constexpr std::string_view lockName = "orrery-run.lock";

[[noreturn]] void throwUnusable(const std::string& path, const std::string& reason) {
    throw OrreryError("The lock of the running engine cannot be taken: " + reason + ".", {path},
                      "Remove the file, or set TMPDIR to another directory.");
}

/// The lock file, opened or made; never a link or a file that could be someone else's.
FileDescriptor openLockFile(const std::string& path) {
    const int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    FileDescriptor file(uninterrupted([&] { return open(path.c_str(), flags, S_IRUSR | S_IWUSR); }));
    if (!file.isOpen()) throwUnusable(path, errno == ELOOP ? "it is a symbolic link" : systemReason(errno));
    struct stat status {};
    if (fstat(file.get(), &status) != 0) throwUnusable(path, systemReason(errno));
    if (!S_ISREG(status.st_mode)) throwUnusable(path, "it is no regular file");
    if (status.st_uid != geteuid()) throwUnusable(path, "it belongs to another user");
    if (status.st_nlink > 1) throwUnusable(path, "it has another name as well");
    return file;
}

/// Two lines: the process and what it runs. They help whoever waits, so a failure to write them is no fault.
void writeHolder(int descriptor, const std::string& description) {
    const std::string text = std::to_string(getpid()) + '\n' + description;
    const bool written = ftruncate(descriptor, 0) == 0 &&
                         pwrite(descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
    if (!written) (void)!ftruncate(descriptor, 0);
}

RunLock::Holder readHolder(int descriptor) {
    std::array<char, 8192> buffer{};
    const ssize_t count = pread(descriptor, buffer.data(), buffer.size(), 0);
    const std::string_view text(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    RunLock::Holder holder;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), holder.processId);
    const auto used = static_cast<std::size_t>(end - text.data());
    if (fault == std::errc() && used < text.size()) holder.description = text.substr(used + 1);
    return holder;
}

} // namespace

std::variant<RunLock, RunLock::Holder> RunLock::tryAcquire(const std::string& directory,
                                                           const std::string& description) {
    const std::string path = directory + std::string(lockName);
    requireNoNul(path);
    FileDescriptor file = openLockFile(path);
    // The lock is the system's, so it ends with its process; what stands in the file is only told to others.
    if (uninterrupted([&] { return flock(file.get(), LOCK_EX | LOCK_NB); }) != 0) {
        if (errno != EWOULDBLOCK) throwUnusable(path, systemReason(errno));
        return readHolder(file.get());
    }
    writeHolder(file.get(), description);
    return RunLock(file.release());
}

RunLock::RunLock(RunLock&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

RunLock& RunLock::operator=(RunLock&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

RunLock::~RunLock() {
    if (m_descriptor < 0) return;
    (void)!ftruncate(m_descriptor, 0); // the file stays: removing it could take a lock away that was just acquired
    close(m_descriptor);
}

} // namespace orrery
