#include "platform/native/ChildReaper.h"

#include "platform/guard/GuardProtocol.h"

#include <sys/socket.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>
#include <utility>

namespace orrery {
namespace {

using namespace std::chrono_literals;

constexpr auto lookInterval = 20ms;
constexpr auto waitInterval = 5ms;
constexpr int lastGraceTries = 100; // half a second, so that a child can still clear its files away
// A killed process is gone in no time unless the system holds it, for example on a dead network drive; then its guard
// goes on waiting for it without us.
constexpr int killTries = 200;

void give(const FileDescriptor& control, GuardOrder order) {
    (void)!send(control.get(), &order, sizeof order, MSG_NOSIGNAL | MSG_DONTWAIT); // gone: nothing is left to end
}

} // namespace

ChildReaper::~ChildReaper() {
    waitForAll(lastGraceTries);
    for (const Run& run : m_runs)
        give(*run.control, GuardOrder::Kill);
    waitForAll(killTries);
}

void ChildReaper::end(pid_t guard, std::shared_ptr<const FileDescriptor> control, FileDescriptor output) {
    give(*control, GuardOrder::End);
    m_runs.push_back({guard, std::move(control), std::move(output)});
    if (m_timer == nullptr) m_timer = m_loop.repeat(lookInterval, [this] { lookAfter(); });
}

void ChildReaper::lookAfter() {
    std::erase_if(m_runs, [](const Run& run) { return waitpid(run.guard, nullptr, WNOHANG) != 0; });
    if (m_runs.empty()) m_timer.reset();
}

void ChildReaper::waitForAll(int tries) {
    for (lookAfter(); !m_runs.empty() && tries > 0; --tries) {
        std::this_thread::sleep_for(waitInterval);
        lookAfter();
    }
}

} // namespace orrery
