#pragma once

#include "platform/ChildProcess.h"
#include "platform/values/Utf8.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// Hears of an engine's run. All calls on the main thread.
class TaskWrapperController {
public:
    virtual ~TaskWrapperController() = default;
    virtual void appendOutput(std::string_view text) = 0; // every piece, not empty, in order, well-formed UTF-8
    virtual void processStarted() = 0;                    // once, before the child is created
    /// How the engine ended, where that is known: at most once, just before processFinished. The wrapper must
    /// not be destroyed in it.
    virtual void engineEnded(const ProcessEnd& /*end*/) {}
    virtual void processFinished() = 0; // once, after the child has been told to terminate
};

/// Runs the engine once: starts it, passes on what it writes, notices the end of its output, stops it on request.
/// The end of a run is the end of the output. How the engine ended is passed on and decides nothing.
class TaskWrapper {
public:
    /// `arguments`: the executable's absolute path, then its arguments. The controller is not owned. Starts nothing.
    /// `held`: descriptors that stay open as long as anything of the engine's run lives.
    TaskWrapper(TaskWrapperController* controller, std::vector<std::string> arguments, ChildProcessLauncher& launcher,
                std::vector<int> held = {});
    TaskWrapper(const TaskWrapper&) = delete;
    TaskWrapper& operator=(const TaskWrapper&) = delete;
    ~TaskWrapper(); // stops first, so a controller that is still set hears processFinished; legal in every callback

    void startProcess(); // at most once
    /// Delivers what the pipe holds now, stops listening, terminates the child and reports the end. Once reported,
    /// it reports nothing again; without a start there is nothing to report. Legal in every callback.
    void stopProcess();
    void clearController() { m_controller = nullptr; }

private:
    enum class State { Created, Running, Stopping, Stopped }; // Stopping: delivering what is left

    void getData(std::span<const std::byte> bytes);
    void deliver(std::string_view text);
    void finish();

    TaskWrapperController* m_controller;
    std::vector<std::string> m_arguments;
    ChildProcessLauncher& m_launcher;
    std::vector<int> m_held;
    std::unique_ptr<ChildProcess> m_task;
    ProcessEnd m_end;
    Utf8Decoder m_decoder; // carries a character that two pieces share
    State m_state = State::Created;
    std::shared_ptr<char> m_alive = std::make_shared<char>(); // expires with this: a callback may destroy it
};

} // namespace orrery
