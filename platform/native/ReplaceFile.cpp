#include "platform/Files.h"
#include "platform/KnownFile.h"
#include "platform/Log.h"
#include "platform/native/FileAttributes.h"
#include "platform/native/FileChecks.h"
#include "platform/native/FileDescriptor.h"
#include "platform/native/SaveLitter.h"
#include "platform/native/SystemCalls.h"
#include "platform/values/OrreryError.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace orrery {
namespace {

/// So that a large file's last sync is no longer than the others, and a caller can tell how far it is.
constexpr std::size_t syncEvery = 32U << 20U;

/// The file to replace, its links followed.
struct Target {
    std::string path; // as the user gave it
    std::string name; // in the directory
    std::string directoryPath;
    FileDescriptor directory;
    bool isListable = true; // else the directory is open for its path only
    bool exists = false;
    struct stat status {}; // when it exists
};

std::string remedyFor(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return "Make room there, or save it on another disk.";
    case EFBIG:
        return "Raise the limit of the file size, or save less.";
    case ENAMETOOLONG:
        return "Choose a shorter name.";
    case EMFILE:
    case ENFILE:
        return "Close some documents, then save again.";
    case ENOENT:
    case ENOTDIR:
        return "Save it in a directory that exists.";
    default:
        return "Save it under another name or in another directory.";
    }
}

[[noreturn]] void throwUnsaved(const Target& target, const std::string& step, int error) {
    throw OrreryError(fmt::format("The file was not saved: {}: {}. {}", step, systemReason(error),
                                  target.exists ? "The old file is unchanged." : "No file was made."),
                      {target.path}, remedyFor(error));
}

[[noreturn]] void refuse(const Target& target, const std::string& reason, const std::string& remedy) {
    throw OrreryError("The file was not saved: " + reason + ".", {target.path}, remedy);
}

/// The path without symbolic links; the path itself when nothing is there yet.
std::string followLinks(const Target& target) {
    using FreedText = std::unique_ptr<char, decltype([](char* text) { std::free(text); })>;
    if (const FreedText resolved{realpath(target.path.c_str(), nullptr)}) return resolved.get();
    const int error = errno;
    if (error == ELOOP) refuse(target, "its symbolic links lead in a circle", "Remove the link.");
    struct stat status {};
    if (error == ENOENT && lstat(target.path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
        refuse(target, "it is a symbolic link to a file that does not exist", "Remove the link or make its target.");
    }
    if (error != ENOENT) throwUnsaved(target, "its place cannot be found", error);
    return target.path;
}

void openDirectory(Target& target, const std::string& resolved) {
    const std::size_t slash = resolved.rfind('/');
    target.name = resolved.substr(slash == std::string::npos ? 0 : slash + 1);
    if (target.name.empty()) refuse(target, "it is a directory", "Add a file name.");
    const std::string directory =
        slash == std::string::npos ? "." : resolved.substr(0, std::max<std::size_t>(slash, 1));
    const int flags = O_DIRECTORY | O_CLOEXEC;
    target.directoryPath = directory;
    target.directory = FileDescriptor(uninterrupted([&] { return open(directory.c_str(), O_RDONLY | flags); }));
    if (!target.directory.isOpen() && errno == EACCES) { // a directory to put files into need not show what it holds
        target.isListable = false;
        target.directory = FileDescriptor(uninterrupted([&] { return open(directory.c_str(), O_PATH | flags); }));
    }
    if (!target.directory.isOpen()) throwUnsaved(target, "its directory cannot be opened", errno);
}

void examineOldFile(Target& target) {
    const int directory = target.directory.get();
    if (fstatat(directory, target.name.c_str(), &target.status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT) throwUnsaved(target, "the old file cannot be examined", errno);
        return;
    }
    target.exists = true;
    const auto mode = target.status.st_mode;
    if (!S_ISREG(mode)) refuse(target, "it is " + fileKind(mode), "Save it under another name.");
    if (faccessat(directory, target.name.c_str(), W_OK, AT_EACCESS) != 0) {
        throwUnsaved(target, "the file is read-only", errno);
    }
    if (target.status.st_nlink > 1) {
        logLine(target.path + ": has more than one name (hard links); only this one gets the new contents.");
    }
}

Target findTarget(const std::string& path) {
    requireNoNul(path);
    Target target;
    target.path = path;
    openDirectory(target, followLinks(target));
    examineOldFile(target);
    return target;
}

/// Keeps SIGXFSZ from ending the program, so that a write beyond the limit fails with EFBIG instead.
class FileSizeSignalHeld {
public:
    FileSizeSignalHeld() {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &m_signals, &m_before);
    }
    ~FileSizeSignalHeld() {
        if (sigismember(&m_before, SIGXFSZ) == 0) {
            constexpr timespec atOnce{};
            sigtimedwait(&m_signals, nullptr, &atOnce); // takes the one that our own write may have raised
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    FileSizeSignalHeld(const FileSizeSignalHeld&) = delete;
    FileSizeSignalHeld& operator=(const FileSizeSignalHeld&) = delete;
    FileSizeSignalHeld(FileSizeSignalHeld&&) = delete;
    FileSizeSignalHeld& operator=(FileSizeSignalHeld&&) = delete;

private:
    sigset_t m_signals{};
    sigset_t m_before{};
};

/// The new contents beside the target, under a short name that nobody can foresee; removed unless it took the
/// target's name.
class TemporaryFile {
public:
    explicit TemporaryFile(const Target& target) : m_target(target) {
        // An old file's mode and owner come later; until then nobody else reads the new contents.
        const mode_t mode = target.exists ? S_IRUSR | S_IWUSR : 0666;
        const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        do {
            m_name = unforeseenSaveName();
            m_file = FileDescriptor(uninterrupted([&] { return openat(directory(), m_name.c_str(), flags, mode); }));
        } while (!m_file.isOpen() && errno == EEXIST);
        if (!m_file.isOpen()) throwUnsaved(target, "no file can be made in its directory", errno);
        m_present = true;
        lock();
    }
    ~TemporaryFile() {
        if (m_present) unlinkat(directory(), m_name.c_str(), 0);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    TemporaryFile(TemporaryFile&&) = delete;
    TemporaryFile& operator=(TemporaryFile&&) = delete;

    /// A second descriptor, since the first one is closed to learn whether the disk has it all.
    void keepOpen() {
        m_kept = FileDescriptor(fcntl(m_file.get(), F_DUPFD_CLOEXEC, 0));
        if (!m_kept.isOpen()) throwUnsaved(m_target, "it cannot be kept open", errno);
    }
    [[nodiscard]] FileDescriptor& kept() { return m_kept; }

    void takeOwnerAndMode() {
        const struct stat& old = m_target.status;
        // Only root can give a file away; elsewhere the new file is the saver's, with the old group if that may be.
        if (fchown(m_file.get(), old.st_uid, old.st_gid) != 0) {
            (void)!fchown(m_file.get(), static_cast<uid_t>(-1), old.st_gid);
        }
        takeAttributes(); // before the mode, which is also the most that an access list grants
        if (fchmod(m_file.get(), old.st_mode & 07777U) != 0) throwUnsaved(m_target, "its mode cannot be set", errno);
    }

    [[nodiscard]] std::string lend() {
        (void)!flock(m_file.get(), LOCK_UN);
        return m_target.directoryPath + '/' + m_name;
    }
    /// Tells others that it is in use; a help, not a condition.
    void lock() { (void)!flock(m_file.get(), LOCK_EX | LOCK_NB); }

    void write(std::string_view bytes) {
        while (!bytes.empty()) {
            const std::size_t piece = std::min<std::size_t>(bytes.size(), 1U << 30U);
            const ssize_t count = uninterrupted([&] { return ::write(m_file.get(), bytes.data(), piece); });
            if (count <= 0) throwUnsaved(m_target, "it cannot be written", count < 0 ? errno : EIO);
            bytes.remove_prefix(static_cast<std::size_t>(count));
            m_unsynced += static_cast<std::size_t>(count);
        }
        if (m_unsynced >= syncEvery) sync();
    }

    void syncAndClose() {
        sync();
        if (::close(m_file.release()) != 0 && errno != EINTR) { // interrupted or not, it is closed
            throwUnsaved(m_target, "it could not be closed", errno);
        }
    }

    void takeTargetsName() {
        if (renameat(directory(), m_name.c_str(), directory(), m_target.name.c_str()) != 0) {
            throwUnsaved(m_target, "it cannot take the old file's place", errno);
        }
        m_present = false;
    }

private:
    [[nodiscard]] int directory() const { return m_target.directory.get(); }

    /// Without its access list the new file could be open to others; other attributes are worth a line.
    void takeAttributes() {
        const FileDescriptor old(openat(directory(), m_target.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
        if (!old.isOpen()) throwUnsaved(m_target, "the old file cannot be examined", errno);
        for (const auto& [name, error] : copyAttributes(old.get(), m_file.get())) {
            if (name == accessListName) throwUnsaved(m_target, "its access list cannot be kept", error);
            logLine(
                fmt::format("{}: the attribute \"{}\" was not kept: {}.", m_target.path, name, systemReason(error)));
        }
    }

    /// Never again after a failed one: the system may forget what it could not write.
    void sync() {
        if (uninterrupted([&] { return fsync(m_file.get()); }) != 0) {
            throwUnsaved(m_target, "it could not be written to the disk", errno);
        }
        m_unsynced = 0;
    }

    const Target& m_target;
    std::string m_name;
    FileDescriptor m_file;
    FileDescriptor m_kept;
    std::size_t m_unsynced = 0; // bytes
    bool m_present = false;
};

/// One that is open for its path only is synced with all of its file system.
void syncDirectory(const Target& target, int fileInIt) {
    const auto sync = [&] { return target.isListable ? fsync(target.directory.get()) : syncfs(fileInIt); };
    // EINVAL: a file system that knows no syncing of directories.
    if (uninterrupted(sync) == 0 || errno == EINVAL) return;
    throw OrreryError("The new file is in place, but its directory could not be written to the disk: " +
                          systemReason(errno) + ". After a power failure the old file may be back.",
                      {target.path}, "Save it again, or on another disk.");
}

class Replacement {
public:
    explicit Replacement(const std::string& path) : m_target(findTarget(path)), m_file(m_target) {
        m_file.keepOpen();
        if (m_target.exists) m_file.takeOwnerAndMode();
    }

    void write(std::string_view bytes) {
        const FileSizeSignalHeld held;
        m_file.write(bytes);
    }

    [[nodiscard]] std::string lend() { return m_file.lend(); }

    /// @return the new file, open for writing and locked
    FileDescriptor finish() {
        const FileSizeSignalHeld held; // the close may still write
        m_file.lock();                 // again, where it was lent
        m_file.syncAndClose();
        m_file.takeTargetsName();
        syncDirectory(m_target, m_file.kept().get());
        removeSaveLitter(m_target.directory.get());
        return std::move(m_file.kept());
    }

private:
    const Target m_target;
    TemporaryFile m_file;
};

} // namespace

struct FileReplacement::State {
    explicit State(const std::string& path) : replacement(path) {}
    Replacement replacement;
};

FileReplacement::FileReplacement(const std::string& path) : m_state(std::make_unique<State>(path)) {}

FileReplacement::~FileReplacement() = default;

void FileReplacement::write(std::string_view bytes) {
    m_state->replacement.write(bytes);
}

std::string FileReplacement::lend() {
    return m_state->replacement.lend();
}

void FileReplacement::finish() {
    (void)m_state->replacement.finish();
}

void replaceFile(const std::string& path, std::string_view bytes) {
    FileReplacement file(path);
    file.write(bytes);
    file.finish();
}

KnownFile replaceKnownFile(const std::string& path, std::string_view bytes) {
    Replacement file(path);
    file.write(bytes);
    FileDescriptor written = file.finish();
    (void)!flock(written.get(), LOCK_UN);
    return KnownFile::opened(written.release(), bytes);
}

} // namespace orrery
