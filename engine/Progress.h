#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orrery::engine {

/// The run was told to stop.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

/// Tells how far a run is, at least twice a second, and ends it when it is told to stop.
class Progress {
public:
    /// @param print takes one line without its end, shown at once
    /// @param stop set from a signal handler
    Progress(std::function<void(std::string_view)> print, const std::atomic<bool>& stop)
        : m_print(std::move(print)), m_stop(stop) {}

    void line(std::string_view text) const { m_print(text); }
    void expect(std::uint32_t rows) { m_rows = rows; }
    void rowDone() { ++m_done; }
    /// Cheap enough to be called at every time step. @throws Interrupted
    void tick();
    [[nodiscard]] double seconds() const;

private:
    using Clock = std::chrono::steady_clock;

    std::function<void(std::string_view)> m_print;
    const std::atomic<bool>& m_stop;
    std::uint32_t m_rows = 0;
    std::uint32_t m_done = 0;
    std::uint32_t m_ticks = 0;
    Clock::time_point m_start = Clock::now();
    Clock::time_point m_next = m_start + std::chrono::milliseconds(500);
};

} // namespace orrery::engine
