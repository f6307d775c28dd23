#pragma once

#include "platform/ProcessEnd.h"
#include "platform/RunLoop.h"
#include "platform/native/FileDescriptor.h"

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <vector>

namespace orrery {

/// Ends process groups in the background and reaps their leaders, which are children of ours.
///
/// A leader stays unreaped until its group has been dealt with: so long its number cannot be given to a stranger, and
/// a signal to the group reaches nobody else. Main thread.
class ChildReaper {
public:
    explicit ChildReaper(RunLoop& loop) : m_loop(loop) {}
    ChildReaper(const ChildReaper&) = delete;
    ChildReaper& operator=(const ChildReaper&) = delete;
    ~ChildReaper(); // waits half a second for what was asked to end, then kills and reaps it

    /// Asks the group to end (SIGTERM), ends what is left of it 2 s later (SIGKILL), reaps the leader.
    /// `output`: the reading end of the group's pipe, kept open so long that last words break no pipe.
    void end(pid_t leader, FileDescriptor output);

private:
    struct Group {
        pid_t leader = 0;
        FileDescriptor output;
        std::chrono::steady_clock::time_point killTime;
        bool killed = false;
    };
    static bool isDealtWith(Group& group);
    void lookAfter();

    RunLoop& m_loop;
    std::vector<Group> m_groups;
    std::unique_ptr<RunLoop::Source> m_timer; // runs while there are groups
};

/// Whether the child has ended; it stays unreaped. True also when it is no child of ours (any more).
[[nodiscard]] bool hasEnded(pid_t child);

/// How the child ended, if it has; it stays unreaped.
[[nodiscard]] ProcessEnd endOf(pid_t child);

} // namespace orrery
