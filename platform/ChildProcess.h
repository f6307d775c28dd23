#pragma once

#include "platform/values/ProcessEnd.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// A child whose standard output and standard error come back through one pipe, in the order it wrote them.
class ChildProcess {
public:
    struct Events {                                             // all on the main thread, never inside start()
        std::function<void(std::span<const std::byte>)> output; // 0..n times, each piece not empty
        std::function<void(const ProcessEnd&)> ended = {};      // at most once, before endOfOutput: how the child ended
        std::function<void()> endOfOutput;                      // exactly once, last, also if the start fails
        std::function<void(std::string_view)> left = {};        // at most once: the child is gone, but something it
                                                                // left behind still holds the pipe; says what
    };

    /// Ends and reaps a running child in the background, as terminate() does; no event is delivered any more. Legal
    /// inside an event.
    virtual ~ChildProcess() = default;

    /// Descriptors of ours that the child does not get, but that stay open as long as anything of it lives: a lock, for
    /// example. Legal before start(), which uses them.
    virtual void hold(std::vector<int> /*descriptors*/) {}

    /// Starts `command` (an absolute path and its arguments) in a process group of its own, with standard input from
    /// /dev/null, no other descriptor of ours and default signals. Legal once. A failed start gives its reason as one
    /// line of output and then the end.
    virtual void start(const std::vector<std::string>& command, Events events) = 0;

    /// Delivers, through Events::output before it returns, what the pipe holds now. Never waits for the child.
    virtual void drain() = 0;

    /// Stops listening: no event is delivered any more. Legal in every state.
    virtual void stopListening() = 0;

    /// Asks everything that came of the child to end (SIGTERM), also what went into a session of its own, and ends what
    /// is left 2 s later (SIGKILL). Returns at once; harmless if the child has already ended. The same happens, with
    /// half a second, when we end in whatever way.
    virtual void terminate() = 0;
};

/// Makes children and outlives them. What they left running when it goes is ended and reaped before that returns, by
/// force after half a second.
class ChildProcessLauncher {
public:
    virtual ~ChildProcessLauncher() = default;
    /// @param name what messages call the program, without an article
    [[nodiscard]] virtual std::unique_ptr<ChildProcess> makeChildProcess(std::string_view name) = 0;
};

} // namespace orrery
