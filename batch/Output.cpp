#include "batch/Output.h"

#include "batch/Command.h"
#include "platform/OrreryError.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace orrery {
namespace {

constexpr std::size_t blockSize = 256U << 10U;

/// Returns 0, or the error number of the write that failed.
int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

} // namespace

Output::Output(const std::string& target) {
    if (target != "-") {
        m_file.emplace(target);
    }
}

void Output::write(std::string_view text) {
    m_held += text;
    if (m_held.size() >= blockSize) {
        flush();
    }
}

void Output::finish() {
    flush();
    if (m_file) {
        m_file->finish();
    }
}

void Output::flush() {
    if (m_file) {
        m_file->write(m_held);
    } else if (const int error = writeAll(STDOUT_FILENO, m_held); error != 0) {
        throw OrreryError(std::string("cannot be written: ") + std::strerror(error) + ".", {.file = "standard output"},
                          "What was written is not complete; send it to a file with room for it.");
    }
    m_held.clear();
}

void writeToStandardError(std::string_view text) {
    (void)writeAll(STDERR_FILENO, text);
}

void printMessage(const std::string& message) {
    std::string line = "orrery-batch: " + message;
    for (char& character : line) {
        if (static_cast<unsigned char>(character) < ' ') {
            character = ' ';
        }
    }
    line += '\n';
    writeToStandardError(line);
}

} // namespace orrery
