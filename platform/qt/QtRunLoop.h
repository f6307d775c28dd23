#pragma once

#include "platform/RunLoop.h"

namespace orrery {

/// The run loop of a Qt program; needs its application object while a source exists. Owned by the program's main.
class QtRunLoop : public RunLoop {
public:
    [[nodiscard]] std::unique_ptr<Source> repeat(std::chrono::nanoseconds interval,
                                                 std::function<void()> callback) override;
    [[nodiscard]] std::unique_ptr<Source> after(std::chrono::nanoseconds delay,
                                                std::function<void()> callback) override;
    [[nodiscard]] std::unique_ptr<Source> watchReadable(int descriptor, std::function<void()> callback) override;
};

} // namespace orrery
