#pragma once

#include "platform/RunLoop.h"

#include <array>
#include <csignal>
#include <functional>
#include <memory>

namespace orrery {

/// Whether a signal that asks the program to end has come since one of these was made, also before the loop has passed
/// it on. Legal at any time, in any thread.
[[nodiscard]] bool terminationAsked();

/// While it lives, SIGINT, SIGTERM and SIGHUP do not end the program: each is carried into the loop and passed on
/// there. A SIGHUP that the program was started to ignore stays ignored. One at a time; the old actions come back at
/// its end.
class TerminationSignals {
public:
    TerminationSignals(RunLoop& loop, std::function<void(int signalNumber)> callback);
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    ~TerminationSignals();

private:
    void deliver();

    std::function<void(int)> m_callback;
    std::array<int, 2> m_ends{-1, -1}; // of a pipe
    std::array<struct sigaction, 3> m_before{};
    std::unique_ptr<RunLoop::Source> m_source;
};

} // namespace orrery
