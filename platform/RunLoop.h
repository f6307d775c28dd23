#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace orrery {

/// The main thread's loop of events: timers, readable descriptors and posted calls. Everything is called back on the
/// main thread, one call at a time; an exception that leaves a callback goes to the program's
/// failure handler, and the loop goes on.
class RunLoop {
public:
    /// A running timer or a watched descriptor; ends with the object. May be destroyed inside its own callback.
    class Source {
    public:
        virtual ~Source() = default;
        /// A timer at rest calls nobody and costs nothing until it is woken. Sources begin awake.
        virtual void setResting(bool /*resting*/) {}
    };

    virtual ~RunLoop() = default;
    /// Calls back every `interval`, also while the user drags a control.
    [[nodiscard]] virtual std::unique_ptr<Source> repeat(std::chrono::nanoseconds interval,
                                                         std::function<void()> callback) = 0;
    /// Calls back once after `delay`, unless the source is destroyed before.
    [[nodiscard]] virtual std::unique_ptr<Source> after(std::chrono::nanoseconds delay,
                                                        std::function<void()> callback) = 0;
    /// Calls back whenever the descriptor can be read (or is at its end), once for each turn of the loop.
    [[nodiscard]] virtual std::unique_ptr<Source> watchReadable(int descriptor, std::function<void()> callback) = 0;
};

} // namespace orrery
