#include "engine/Progress.h"

#include <fmt/format.h>

namespace orrery::engine {

void Progress::tick() {
    if (m_stop.load(std::memory_order_relaxed)) {
        throw Interrupted();
    }
    if (++m_ticks % 16 != 0) {
        return;
    } // a step takes microseconds, a look at the clock a part of one
    const Clock::time_point now = Clock::now();
    if (now < m_next) {
        return;
    }
    m_next = now + std::chrono::milliseconds(500);
    m_print(fmt::format("{} of {} rows ({} %), {:.0f} s", m_done, m_rows,
                        m_rows == 0 ? 100 : std::uint64_t{m_done} * 100 / m_rows, seconds()));
}

double Progress::seconds() const {
    return std::chrono::duration<double>(Clock::now() - m_start).count();
}

} // namespace orrery::engine
