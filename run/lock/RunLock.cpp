#include "run/lock/RunLock.h"

#include "platform/native/FileDescriptor.h"
#include "platform/native/SystemCalls.h"
#include "platform/values/OrreryError.h"

#include <fcntl.h>
#include <fmt/format.h>
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
    if (!S_ISREG(status.st_mode)) throwUnusable(path, "it is not an ordinary file");
    if (status.st_uid != geteuid()) throwUnusable(path, "it belongs to another user");
    if (status.st_nlink > 1) throwUnusable(path, "it has another name as well");
    return file;
}

bool isSameFile(int descriptor, const std::string& path) {
    struct stat ours {};
    struct stat there {};
    return fstat(descriptor, &ours) == 0 && lstat(path.c_str(), &there) == 0 && ours.st_dev == there.st_dev &&
           ours.st_ino == there.st_ino;
}

/// @return whether we have the lock now; false when somebody else has it
bool lock(int descriptor, const std::string& path) {
    if (uninterrupted([&] { return flock(descriptor, LOCK_EX | LOCK_NB); }) == 0) return true;
    if (errno == EWOULDBLOCK) return false;
    throwUnusable(path, systemReason(errno));
}

/// The directory, when a lock on it concerns nobody but this user.
FileDescriptor openOwnDirectory(const std::string& path) {
    FileDescriptor directory(uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    struct stat status {};
    const bool isOwn = directory.isOpen() && fstat(directory.get(), &status) == 0 && status.st_uid == geteuid();
    return isOwn ? std::move(directory) : FileDescriptor();
}

/// Two lines: the process with its run's number, and what it runs. They help whoever waits, so a failure to write them
/// is not a fault.
void writeHolder(int descriptor, const RunLock::Holder& holder) {
    const std::string text = fmt::format("{} {}\n{}", holder.processId, holder.run, holder.description);
    const bool written = ftruncate(descriptor, 0) == 0 &&
                         pwrite(descriptor, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
    if (!written) (void)!ftruncate(descriptor, 0);
}

RunLock::Holder readHolder(int descriptor) {
    std::array<char, 8192> buffer{};
    const ssize_t count = pread(descriptor, buffer.data(), buffer.size(), 0);
    const std::string_view text(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    const std::size_t lineEnd = text.find('\n');
    RunLock::Holder holder;
    if (lineEnd == std::string_view::npos) return holder;
    const auto number = std::from_chars(text.data(), text.data() + lineEnd, holder.processId);
    if (number.ptr != text.data() + lineEnd) std::from_chars(number.ptr + 1, text.data() + lineEnd, holder.run);
    holder.description = text.substr(lineEnd + 1);
    return holder;
}

unsigned nextRun() {
    static unsigned runs = 0; // main thread only
    return ++runs;
}

} // namespace

std::variant<RunLock, RunLock::Holder> RunLock::tryAcquire(const std::string& directory,
                                                           const std::string& description) {
    const std::string path = directory + std::string(lockName);
    requireNoNul(path);
    FileDescriptor file = openLockFile(path);
    if (!lock(file.get(), path)) return readHolder(file.get());
    if (!isSameFile(file.get(), path)) return Holder{}; // replaced meanwhile: whoever did that is at work there
    FileDescriptor own = openOwnDirectory(directory);
    if (own.isOpen() && uninterrupted([&] { return flock(own.get(), LOCK_EX | LOCK_NB); }) != 0) {
        if (errno == EWOULDBLOCK) return Holder{}; // by one whose file was cleared away
        own.reset();
    }
    RunLock made(path, file.release(), own.release());
    Holder holder = made.holder();
    holder.description = description;
    writeHolder(made.m_file, holder);
    return made;
}

RunLock::RunLock(std::string path, int file, int directory)
    : m_path(std::move(path)), m_run(nextRun()), m_file(file), m_directory(directory) {}

RunLock::RunLock(RunLock&& other) noexcept
    : m_path(std::move(other.m_path)), m_run(other.m_run), m_file(std::exchange(other.m_file, -1)),
      m_directory(std::exchange(other.m_directory, -1)) {}

RunLock& RunLock::operator=(RunLock&& other) noexcept {
    std::swap(m_path, other.m_path);
    std::swap(m_run, other.m_run);
    std::swap(m_file, other.m_file);
    std::swap(m_directory, other.m_directory);
    return *this;
}

// The file stays, with its text: removing it could take a lock away that was just acquired, and who inherited the lock
// is still reported.
RunLock::~RunLock() {
    for (const int descriptor : descriptors())
        close(descriptor);
}

RunLock::Standing RunLock::standing() const {
    if (isSameFile(m_file, m_path)) return Standing::Whole;
    const std::string directory = m_path.substr(0, m_path.rfind('/') + 1) + ".";
    return m_directory >= 0 && isSameFile(m_directory, directory) ? Standing::FileLost : Standing::Lost;
}

RunLock::Holder RunLock::holder() const {
    return {getpid(), m_run, {}};
}

std::vector<int> RunLock::descriptors() const {
    std::vector<int> open;
    for (const int descriptor : {m_file, m_directory}) {
        if (descriptor >= 0) open.push_back(descriptor);
    }
    return open;
}

} // namespace orrery
