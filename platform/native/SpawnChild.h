#pragma once

#include "platform/guard/GuardProtocol.h"
#include "platform/native/FileDescriptor.h"
#include "platform/values/OrreryError.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace orrery {

/// A program as messages have it.
struct NamedProgram {
    std::string path;
    std::string name; // what it is called, without an article
};

/// A child just made, behind the guard that starts it and ends all that comes of it.
struct SpawnedChild {
    pid_t guard = 0;        // our child, the leader of a process group of its own, not reaped yet
    FileDescriptor output;  // reading end of the pipe that is the child's standard output and error; non-blocking
    FileDescriptor control; // takes orders and gives reports, see GuardProtocol.h; the guard's end is gone with it
};

/// Has a guard execute `command` (an absolute path and its arguments) in a process group of its own with standard input
/// from /dev/null, no other descriptor of ours, default signals and our environment. When we are gone, the guard ends
/// it. `name`: what messages call the program. `held` stay open as long as anything that the child started lives. Does
/// not wait for the program's start.
/// @throws OrreryError naming the path, the reason and a remedy
[[nodiscard]] SpawnedChild spawnChild(const std::vector<std::string>& command, const std::string& name,
                                      const std::vector<int>& held);

/// What the guard has to say next; std::nullopt when there is nothing now, or will be nothing more.
[[nodiscard]] std::optional<GuardReport> nextReport(const FileDescriptor& control);

/// Why the program could not be executed, for people.
[[nodiscard]] OrreryError startFailure(const NamedProgram& program, int error);

} // namespace orrery
