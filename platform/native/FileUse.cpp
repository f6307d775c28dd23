#include "platform/FileUse.h"

#include "platform/Files.h"
#include "platform/native/FileDescriptor.h"
#include "platform/native/SystemCalls.h"
#include "platform/values/OrreryError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orrery {
namespace {

[[noreturn]] void throwUnusable(const std::string& path) {
    throw OrreryError("The file cannot be locked: " + systemReason(errno) + ".", {path}, "Check its permissions.");
}

/// For writing, although nothing is written: file systems of the network give such a lock on no other descriptor.
FileDescriptor openForUseAlone(const std::string& path) {
    requireNoNul(path);
    FileDescriptor file(
        uninterrupted([&] { return open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW); }));
    if (!file.isOpen()) throwUnusable(path);
    return file;
}

bool isStillThere(int descriptor, const std::string& path) {
    struct stat ours {};
    struct stat there {};
    return fstat(descriptor, &ours) == 0 && lstat(path.c_str(), &there) == 0 && ours.st_dev == there.st_dev &&
           ours.st_ino == there.st_ino;
}

} // namespace

std::optional<FileUse> FileUse::tryBegin(const std::string& path, Kind kind) {
    const bool alone = kind == Kind::Alone;
    FileDescriptor file = alone ? openForUseAlone(path) : FileDescriptor(ReadableFile(path).release());
    if (uninterrupted([&] { return flock(file.get(), (alone ? LOCK_EX : LOCK_SH) | LOCK_NB); }) != 0) {
        if (errno == EWOULDBLOCK) return std::nullopt;
        if (alone) throwUnusable(path); // who could not mark it may be reading it
    }
    if (alone && !isStillThere(file.get(), path)) return std::nullopt;
    return FileUse(file.release());
}

FileUse::~FileUse() {
    if (m_descriptor >= 0) close(m_descriptor);
}

} // namespace orrery
