#pragma once

#include "platform/ChildProcess.h"
#include "platform/RunLoop.h"
#include "platform/native/ChildReaper.h"

namespace orrery {

/// Makes children with fork and exec and reads them from the run loop, which outlives the launcher. Main thread: its
/// children are killed when the thread that started them ends.
class PosixChildProcessLauncher : public ChildProcessLauncher {
public:
    explicit PosixChildProcessLauncher(RunLoop& loop);
    [[nodiscard]] std::unique_ptr<ChildProcess> makeChildProcess(std::string_view name) override;

private:
    RunLoop& m_loop;
    ChildReaper m_reaper;
};

} // namespace orrery
