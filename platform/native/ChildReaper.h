#pragma once

#include "platform/RunLoop.h"
#include "platform/native/FileDescriptor.h"

#include <sys/types.h>

#include <memory>
#include <vector>

namespace orrery {

/// Has guards end their runs in the background, and reaps the guards, which are children of ours. Main thread.
class ChildReaper {
public:
    explicit ChildReaper(RunLoop& loop) : m_loop(loop) {}
    ChildReaper(const ChildReaper&) = delete;
    ChildReaper& operator=(const ChildReaper&) = delete;
    ~ChildReaper(); // waits half a second for what was asked to end, then has it killed and reaps the guard

    /// Has everything of the guard's run asked to end (SIGTERM) and what is left 2 s later ended by force (SIGKILL).
    /// `output`: the reading end of the run's pipe, kept open so long that last words break no pipe.
    void end(pid_t guard, std::shared_ptr<const FileDescriptor> control, FileDescriptor output);

private:
    struct Run {
        pid_t guard = 0;
        std::shared_ptr<const FileDescriptor> control;
        FileDescriptor output;
    };
    void lookAfter();
    void waitForAll(int tries);

    RunLoop& m_loop;
    std::vector<Run> m_runs;
    std::unique_ptr<RunLoop::Source> m_timer; // works while there are runs
};

} // namespace orrery
