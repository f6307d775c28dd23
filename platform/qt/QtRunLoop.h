#pragma once

#include "platform/RunLoop.h"

namespace orrery {

/// The run loop of a Qt program; needs its application object while a source exists. Owned by the program's main.
class QtRunLoop : public RunLoop {
public:
    /// While one exists, the timers of all run loops call nobody: a window that paints during a calculation of the main
    /// thread must let nothing else in. What came due meanwhile is made up for afterwards, once.
    class Pause {
    public:
        Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause();
    };

    [[nodiscard]] std::unique_ptr<Source> repeat(std::chrono::nanoseconds interval,
                                                 std::function<void()> callback) override;
    [[nodiscard]] std::unique_ptr<Source> after(std::chrono::nanoseconds delay,
                                                std::function<void()> callback) override;
    [[nodiscard]] std::unique_ptr<Source> watchReadable(int descriptor, std::function<void()> callback) override;
};

} // namespace orrery
