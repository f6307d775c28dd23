#include "platform/qt/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <utility>

namespace orrery {
namespace {

constexpr std::array<int, 3> numbers{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> signalPipe = -1; // writing end
std::atomic<bool> wasAsked = false;

extern "C" void passSignalOn(int number) {
    const int error = errno;
    wasAsked = true;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(signalPipe.load(), &byte, 1); // full: enough signals wait there
    errno = error;
}

void install(int number, struct sigaction& before) {
    struct sigaction action {};
    action.sa_handler = passSignalOn;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, &before);
    if (number == SIGHUP && before.sa_handler == SIG_IGN) sigaction(number, &before, nullptr); // nohup
}

} // namespace

bool terminationAsked() {
    return wasAsked;
}

TerminationSignals::TerminationSignals(RunLoop& loop, std::function<void(int)> callback)
    : m_callback(std::move(callback)) {
    if (pipe2(m_ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return; // no descriptors left: signals keep their default
    signalPipe = m_ends[1];
    wasAsked = false;
    m_source = loop.watchReadable(m_ends[0], [this] { deliver(); });
    for (std::size_t i = 0; i < numbers.size(); ++i)
        install(numbers.at(i), m_before.at(i));
}

TerminationSignals::~TerminationSignals() {
    if (m_source == nullptr) return;
    for (std::size_t i = 0; i < numbers.size(); ++i)
        sigaction(numbers.at(i), &m_before.at(i), nullptr);
    m_source.reset();
    signalPipe = -1;
    close(m_ends[0]);
    close(m_ends[1]);
}

void TerminationSignals::deliver() {
    unsigned char number = 0;
    if (read(m_ends[0], &number, 1) == 1) m_callback(number);
}

} // namespace orrery
