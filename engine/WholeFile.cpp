#include "engine/WholeFile.h"

#include "platform/values/OrreryError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace orrery::engine {

namespace {

constexpr std::size_t bufferSize = 1U << 20U;

} // namespace

WholeFile::WholeFile(std::string path)
    : m_path(std::move(path)), m_partPath(m_path + "." + std::to_string(getpid()) + ".part") {
    struct stat status {};
    if (stat(m_path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        throw OrreryError("What is here is not a file, so no result can be written.", {m_path},
                          "Remove it, or name another file.");
    }
    m_descriptor = open(m_partPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (m_descriptor < 0) {
        fail("cannot be created", errno);
    }
    m_buffer.reserve(bufferSize + bufferSize / 4);
}

WholeFile::WholeFile(WholeFile&& other) noexcept
    : m_path(std::move(other.m_path)), m_partPath(std::exchange(other.m_partPath, {})),
      m_buffer(std::move(other.m_buffer)), m_descriptor(std::exchange(other.m_descriptor, -1)) {}

WholeFile::~WholeFile() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
    if (!m_partPath.empty()) {
        unlink(m_partPath.c_str());
    }
}

void WholeFile::flushIfLarge() {
    if (m_buffer.size() >= bufferSize) {
        flush();
    }
}

void WholeFile::publish() {
    flush();
    if (close(std::exchange(m_descriptor, -1)) != 0) {
        fail("cannot be written", errno);
    }
    if (std::rename(m_partPath.c_str(), m_path.c_str()) != 0) {
        fail("cannot be put in place", errno);
    }
    m_partPath.clear();
}

void WholeFile::flush() {
    std::string_view rest = m_buffer;
    while (!rest.empty()) {
        const ssize_t written = write(m_descriptor, rest.data(), rest.size());
        if (written < 0 && errno != EINTR) {
            fail("cannot be written", errno);
        }
        if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    m_buffer.clear();
}

void WholeFile::fail(const std::string& what, int error) const {
    throw OrreryError("the result file " + what + ": " + std::generic_category().message(error) +
                          "; any file that was there before is unchanged.",
                      {m_path}, "Make room or choose a directory that can be written, then run again.");
}

} // namespace orrery::engine
