#include "platform/Files.h"

#include "platform/native/FileChecks.h"
#include "platform/native/FileDescriptor.h"
#include "platform/native/SystemCalls.h"
#include "platform/values/OrreryError.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <ctime>
#include <limits>
#include <utility>

namespace orrery {
namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

Date dateOf(const timespec& time) {
    return {time.tv_sec - referenceDateInUnixTime, static_cast<std::int32_t>(time.tv_nsec)};
}

[[noreturn]] void throwUnreadable(const std::string& path, const std::string& reason) {
    throw OrreryError("The file cannot be read: " + reason + ".", {path}, "Check the path and its permissions.");
}

struct stat statusOf(int descriptor, const std::string& path) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) throwUnreadable(path, systemReason(errno));
    return status;
}

/// The text of a small system file; empty when there is none.
std::string systemFile(const std::string& path) {
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text(16384, '\0');
    const ssize_t count = file.isOpen() ? read(file.get(), text.data(), text.size()) : 0;
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text;
}

/// The number after the label at the start of a line ("" means the first number); std::nullopt when there is none.
std::optional<std::uint64_t> numberAfter(std::string_view text, std::string_view label) {
    while (!text.empty() && !text.starts_with(label))
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    if (text.empty()) return std::nullopt;
    text.remove_prefix(label.size());
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::uint64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() ? std::optional(number) : std::nullopt;
}

std::uint64_t less(std::uint64_t limit, std::uint64_t used) {
    return limit > used ? limit - used : 0;
}

std::uint64_t systemMemory() {
    const auto kilobytes = numberAfter(systemFile("/proc/meminfo"), "MemAvailable:");
    return kilobytes ? *kilobytes * 1024 : unlimited;
}

/// What the control group (version 2) of this process and the groups above it leave. Cache that can be dropped counts
/// as free.
std::uint64_t controlGroupMemory() {
    const std::string groups = systemFile("/proc/self/cgroup");
    const std::size_t start = groups.find("0::/");
    if (start == std::string::npos) return unlimited;
    std::string group = groups.substr(start + 3, groups.find('\n', start) - start - 3);
    std::uint64_t least = unlimited;
    for (;;) {
        const std::string directory = "/sys/fs/cgroup" + group + "/";
        const auto limit = numberAfter(systemFile(directory + "memory.max"), "");
        const auto used = numberAfter(systemFile(directory + "memory.current"), "");
        const auto cache = numberAfter(systemFile(directory + "memory.stat"), "inactive_file ");
        if (limit && used) least = std::min(least, less(*limit, less(*used, cache.value_or(0))));
        if (group.empty()) return least;
        group.resize(group.rfind('/'));
    }
}

std::uint64_t addressSpace() {
    rlimit limit{};
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return unlimited;
    const auto pages = numberAfter(systemFile("/proc/self/statm"), "");
    return less(limit.rlim_cur, pages.value_or(0) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)));
}

/// The running program's own path; empty when the system does not tell.
std::string programPath() {
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
    std::string path(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    constexpr std::string_view mark = " (deleted)"; // a new build replaced the running program
    if (path.ends_with(mark)) path.resize(path.size() - mark.size());
    return path;
}

bool isExecutableFile(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

std::string currentDirectory() {
    std::array<char, PATH_MAX> buffer{};
    if (getcwd(buffer.data(), buffer.size()) != nullptr) return buffer.data();
    throw OrreryError("The current directory cannot be found: " + systemReason(errno) + ".", {},
                      "Change to a directory that exists.");
}

} // namespace

std::string fileKind(unsigned mode) {
    switch (mode & static_cast<unsigned>(S_IFMT)) {
    case S_IFDIR:
        return "a directory";
    case S_IFIFO:
        return "a named pipe";
    case S_IFSOCK:
        return "a socket";
    case S_IFCHR:
    case S_IFBLK:
        return "a device";
    default:
        return "not a regular file";
    }
}

FileIdentity identityOf(const struct stat& status) {
    return {.device = status.st_dev,
            .inode = status.st_ino,
            .size = static_cast<std::uint64_t>(status.st_size),
            .modified = dateOf(status.st_mtim),
            .changed = dateOf(status.st_ctim)};
}

bool fileExists(const std::string& path) {
    return path.find('\0') == std::string::npos && access(path.c_str(), F_OK) == 0;
}

std::optional<Date> modificationDate(const std::string& path) {
    struct stat status {};
    if (path.find('\0') != std::string::npos || stat(path.c_str(), &status) != 0) return std::nullopt;
    return dateOf(status.st_mtim);
}

std::optional<FileIdentity> fileIdentity(const std::string& path) {
    struct stat status {};
    if (path.find('\0') != std::string::npos || stat(path.c_str(), &status) != 0) return std::nullopt;
    return identityOf(status);
}

void awaitNewStamp(const FileIdentity& identity) {
    constexpr timespec moment{0, 1'000'000};
    for (int tries = 0; tries < 20; ++tries) {
        timespec now{};
        clock_gettime(CLOCK_REALTIME_COARSE, &now);
        if (dateOf(now) > identity.changed) return;
        nanosleep(&moment, nullptr);
    }
}

ReadableFile::ReadableFile(const std::string& path) : m_path(path) {
    requireNoNul(path);
    FileDescriptor file(
        uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); }));
    if (!file.isOpen()) throwUnreadable(path, systemReason(errno));
    const struct stat status = statusOf(file.get(), path);
    if (!S_ISREG(status.st_mode)) throwUnreadable(path, "it is " + fileKind(status.st_mode));
    m_descriptor = file.release();
}

ReadableFile::ReadableFile(ReadableFile&& other) noexcept
    : m_path(std::move(other.m_path)), m_descriptor(std::exchange(other.m_descriptor, -1)) {}

ReadableFile& ReadableFile::operator=(ReadableFile&& other) noexcept {
    std::swap(m_path, other.m_path);
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

ReadableFile::~ReadableFile() {
    if (m_descriptor >= 0) close(m_descriptor);
}

std::size_t ReadableFile::readAt(char* buffer, std::size_t capacity, std::uint64_t offset) const {
    std::size_t done = 0;
    while (done < capacity) {
        const auto position = static_cast<off_t>(offset + done);
        const ssize_t count = pread(m_descriptor, buffer + done, capacity - done, position);
        if (count == 0) break;
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            throwUnreadable(m_path, fmt::format("at byte {}, {}", position, systemReason(errno)));
        }
    }
    return done;
}

std::uint64_t ReadableFile::size() const {
    return static_cast<std::uint64_t>(statusOf(m_descriptor, m_path).st_size);
}

int ReadableFile::release() {
    return std::exchange(m_descriptor, -1);
}

Date ReadableFile::modificationDate() const {
    return dateOf(statusOf(m_descriptor, m_path).st_mtim);
}

std::string readWholeFile(const std::string& path, std::uint64_t limit) {
    return wholeContents(ReadableFile(path), limit);
}

std::string wholeContents(const ReadableFile& file, std::uint64_t limit) {
    const std::uint64_t size = file.size();
    const Date date = file.modificationDate();
    if (size > limit) throwUnreadable(file.path(), fmt::format("it is larger than {} bytes", limit));
    std::string bytes(size, '\0');
    const std::size_t count = file.readAt(bytes.data(), bytes.size(), 0);
    requireUnchanged(file, count, date);
    return bytes;
}

void requireUnchanged(const ReadableFile& file, std::uint64_t bytesRead, const Date& dateBefore) {
    if (file.size() == bytesRead && file.modificationDate() == dateBefore) return;
    throw OrreryError("The file changed while it was read.", {file.path()}, "Try again.");
}

std::string absolutePath(const std::string& path) {
    const std::string whole = path.starts_with('/') ? path : currentDirectory() + '/' + path;
    std::string result;
    for (std::size_t start = 0; start < whole.size();) {
        const std::size_t end = std::min(whole.find('/', start), whole.size());
        const std::string_view part = std::string_view(whole).substr(start, end - start);
        start = end + 1;
        if (part == "..") {
            result.resize(result.empty() ? 0 : result.rfind('/'));
        } else if (!part.empty() && part != ".") {
            result.append("/").append(part);
        }
    }
    return result.empty() ? "/" : result;
}

std::string fileUrl(const std::string& absolutePath) {
    constexpr std::string_view literal = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string url = "file://";
    for (const char c : absolutePath) {
        if (literal.find(c) != std::string_view::npos) {
            url += c;
        } else {
            url += fmt::format("%{:02X}", static_cast<unsigned char>(c));
        }
    }
    return url;
}

std::optional<std::string> pathForAuxiliaryExecutable(const std::string& name) {
    const std::string program = programPath();
    if (program.empty() || name.empty() || name.find('/') != std::string::npos) return std::nullopt;
    const std::string directory = program.substr(0, program.rfind('/'));
    for (const char* const place : {"/", "/../libexec/orrery/"}) {
        const std::string path = absolutePath(fmt::format("{}{}{}", directory, place, name));
        if (isExecutableFile(path)) return path;
    }
    return std::nullopt;
}

std::uint64_t availableMemory() {
    return std::min({systemMemory(), controlGroupMemory(), addressSpace()});
}

} // namespace orrery
