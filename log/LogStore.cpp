#include "log/LogStore.h"

#include "platform/TemporaryDirectory.h"
#include "platform/Workers.h"
#include "platform/native/FileDescriptor.h"
#include "platform/native/SystemCalls.h"
#include "platform/values/OrreryError.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace orrery {
namespace {

/// What a flood leaves free on the disk for everything else, the results of its run among it.
constexpr std::uint64_t reserve = 1U << 30U;

class FileStore : public LogStore {
public:
    explicit FileStore(FileDescriptor file) : m_file(std::move(file)) {}
    FileStore(const FileStore&) = delete;
    FileStore& operator=(const FileStore&) = delete;
    ~FileStore() override;

    bool write(std::uint64_t offset, std::string_view bytes) override;
    [[nodiscard]] bool read(std::uint64_t offset, std::span<char> bytes) const override;
    [[nodiscard]] std::uint64_t dropBefore(std::uint64_t offset) override;

private:
    [[nodiscard]] bool hasRoom(std::uint64_t size);

    FileDescriptor m_file;
    std::uint64_t m_begin = 0;
    std::uint64_t m_end = 0;
    std::uint64_t m_room = 0; // that may be taken before the disk is asked again
};

/// The system frees the disk's blocks in the close: of many gigabytes that takes a second.
FileStore::~FileStore() {
    const int file = m_file.release();
    runApart([file] { ::close(file); });
}

bool FileStore::write(std::uint64_t offset, std::string_view bytes) {
    if (!hasRoom(bytes.size())) return false;
    for (std::size_t done = 0; done < bytes.size();) {
        const auto place = static_cast<off_t>(offset + done);
        const ssize_t count =
            uninterrupted([&] { return pwrite(m_file.get(), bytes.data() + done, bytes.size() - done, place); });
        if (count <= 0) {
            m_room = 0;
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    if (m_begin == m_end) m_begin = offset;
    m_end = offset + bytes.size();
    m_room -= bytes.size();
    return true;
}

bool FileStore::hasRoom(std::uint64_t size) {
    struct statvfs disk {};
    if (m_room < size && fstatvfs(m_file.get(), &disk) == 0) {
        const std::uint64_t free = disk.f_bavail * disk.f_frsize;
        m_room = std::min<std::uint64_t>(free - std::min(free, reserve), 1U << 24U); // others take some meanwhile
    }
    return m_room >= size;
}

bool FileStore::read(std::uint64_t offset, std::span<char> bytes) const {
    while (!bytes.empty()) {
        const ssize_t count =
            uninterrupted([&] { return pread(m_file.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
        if (count <= 0) return false;
        offset += static_cast<std::uint64_t>(count);
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

/// A hole at the begin, where the file system can make one; else the file gives up all that it has.
std::uint64_t FileStore::dropBefore(std::uint64_t offset) {
    if (offset <= m_begin) return m_begin;
    const auto count = static_cast<off_t>(std::min(offset, m_end) - m_begin);
    constexpr int hole = FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE;
    if (offset < m_end && fallocate(m_file.get(), hole, static_cast<off_t>(m_begin), count) == 0) {
        m_begin = offset;
        m_room += static_cast<std::uint64_t>(count);
    } else if (ftruncate(m_file.get(), 0) == 0) {
        m_room += m_end - m_begin;
        m_begin = m_end;
    }
    return m_begin;
}

bool liesInMemory(const FileDescriptor& file) {
    struct statfs system {};
    if (fstatfs(file.get(), &system) != 0) return true;
    return system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC;
}

FileDescriptor namelessFile(const std::string& directory) {
    FileDescriptor file(open(directory.c_str(), O_TMPFILE | O_RDWR | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (file.isOpen()) return file;
    std::string path = directory + "/orrery-log-XXXXXX"; // where the file system needs a name
    file = FileDescriptor(mkostemp(path.data(), O_CLOEXEC));
    if (file.isOpen()) unlink(path.c_str());
    return file;
}

std::vector<std::string> directories() {
    try {
        return {temporaryDirectory(), "/var/tmp"};
    } catch (const OrreryError&) { // whoever needs it for more than room says so
        return {"/var/tmp"};
    }
}

} // namespace

std::unique_ptr<LogStore> makeLogStore() {
    for (const std::string& directory : directories()) {
        FileDescriptor file = namelessFile(directory);
        if (file.isOpen() && !liesInMemory(file)) return std::make_unique<FileStore>(std::move(file));
    }
    return nullptr;
}

} // namespace orrery
