#include "batch/Output.h"

#include "batch/Command.h"
#include "platform/SystemReason.h"
#include "platform/values/OrreryError.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <utility>

namespace orrery {
namespace {

constexpr std::size_t blockSize = 256U << 10U;

bool (*isGivenUp)() = nullptr;

/// Waits until a piece of PIPE_BUF bytes can be written without waiting. @return false when it was given up
bool awaitRoom(int descriptor) {
    constexpr int lookIntervalMs = 100;
    if (isGivenUp == nullptr) return true;
    for (;;) {
        const bool givenUp = isGivenUp();
        pollfd output{descriptor, POLLOUT, 0};
        const int found = poll(&output, 1, givenUp ? 0 : lookIntervalMs);
        if (found > 0 || (found < 0 && errno != EINTR)) return true; // a fault is the write's to tell
        if (givenUp) return false;
    }
}

/// Returns 0, or the error number of the write that failed.
int writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        if (!awaitRoom(descriptor)) {
            return EINTR;
        }
        const std::string_view piece = isGivenUp == nullptr ? text : text.substr(0, PIPE_BUF);
        const ssize_t written = ::write(descriptor, piece.data(), piece.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

} // namespace

void giveUpWritesWhen(bool (*asked)()) {
    isGivenUp = asked;
}

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
        throw OrreryError("It cannot be written: " + systemReason(error) + ".", {.file = "standard output"},
                          "The output is incomplete; send it to a file on a disk with more room.");
    }
    m_held.clear();
}

void writeToStandardError(std::string_view text) {
    (void)writeAll(STDERR_FILENO, text);
}

// In a buffer of its own: where memory ran out, that is what is to be reported.
void printMessage(std::string_view message) {
    constexpr std::string_view prefix = "orrery-batch: ";
    std::array<char, 1024> line{};
    std::size_t used = prefix.copy(line.data(), prefix.size());
    for (const char character : message) {
        line.at(used++) = static_cast<unsigned char>(character) < ' ' ? ' ' : character;
        if (used + 1 == line.size()) {
            writeToStandardError({line.data(), std::exchange(used, 0)});
        }
    }
    line.at(used++) = '\n';
    writeToStandardError({line.data(), used});
}

} // namespace orrery
