#include "platform/KnownFile.h"

#include "platform/Files.h"
#include "platform/native/FileChecks.h"
#include "platform/native/FileDescriptor.h"
#include "platform/native/SystemCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <functional>
#include <optional>
#include <utility>

namespace orrery {

namespace {

std::size_t contentsHash(std::string_view bytes) {
    return std::hash<std::string_view>{}(bytes);
}

std::optional<std::size_t> hashOfFile(const std::string& path) {
    try {
        return contentsHash(readWholeFile(path));
    } catch (const OrreryError&) {
        return std::nullopt;
    }
}

/// Whoever shares the lock keeps others from having it alone. Takes any lock of the descriptor's own away.
bool othersShareLock(int descriptor) {
    const int failed = uninterrupted([&] { return flock(descriptor, LOCK_EX | LOCK_NB); });
    const bool others = failed != 0 && errno == EWOULDBLOCK;
    (void)!flock(descriptor, LOCK_UN);
    return others;
}

} // namespace

struct KnownFile::State {
    FileDescriptor file;
    FileIdentity identity;
    std::size_t hash = 0;
    bool isClaimed = false;
};

KnownFile::KnownFile() = default;

KnownFile::KnownFile(std::shared_ptr<State> state) : m_state(std::move(state)) {}

KnownFile KnownFile::read(const std::string& path, std::string& bytes) {
    ReadableFile file(path);
    bytes = wholeContents(file, largestWholeFile);
    return opened(file.release(), bytes);
}

KnownFile KnownFile::opened(int descriptor, std::string_view contents) {
    auto state = std::make_shared<State>();
    state->file = FileDescriptor(descriptor);
    state->hash = contentsHash(contents);
    struct stat status {};
    if (fstat(descriptor, &status) == 0) state->identity = identityOf(status); // else the contents alone decide
    return KnownFile(std::move(state));
}

KnownFile::Change KnownFile::changeAt(const std::string& path) const {
    if (!m_state) return Change::None;
    if (const auto hash = hashOfFile(path)) return *hash == m_state->hash ? Change::None : Change::Contents;
    if (const auto now = fileIdentity(path)) return *now == m_state->identity ? Change::None : Change::Contents;
    return errno == ENOENT || errno == ENOTDIR ? Change::Missing : Change::None; // else the save says what is wrong
}

void KnownFile::claim() {
    if (!m_state) return;
    (void)!flock(m_state->file.get(), LOCK_SH | LOCK_NB); // a help where the file system has locks, not a condition
    m_state->isClaimed = true;
}

bool KnownFile::isClaimedElsewhere(const std::string& path) const {
    const FileDescriptor now(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    if (!now.isOpen() || fstat(now.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    if (!m_state || !identityOf(status).isSameFileAs(m_state->identity)) return othersShareLock(now.get());
    const bool others = othersShareLock(m_state->file.get());
    if (m_state->isClaimed) (void)!flock(m_state->file.get(), LOCK_SH | LOCK_NB);
    return others;
}

} // namespace orrery
