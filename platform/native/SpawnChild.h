#pragma once

#include "platform/OrreryError.h"
#include "platform/native/FileDescriptor.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace orrery {

/// A child just made: the leader of a process group of its own, not reaped yet.
struct SpawnedChild {
    pid_t pid = 0;
    FileDescriptor output; // reading end of the pipe that is its standard output and standard error; non-blocking
    FileDescriptor status; // says why the program could not be executed, see executionFailure(); non-blocking
};

/// Makes a child that executes `command` (an absolute path and its arguments) with standard input from /dev/null, no
/// other descriptor of ours, default signals and our environment. It is killed when the calling thread ends, so call
/// this on the main thread. Does not wait until the program is executed.
/// @throws OrreryError naming the path, the reason and a remedy
[[nodiscard]] SpawnedChild spawnChild(const std::vector<std::string>& command);

/// Why the child could not execute its program; std::nullopt when it could, or has not tried yet.
[[nodiscard]] std::optional<OrreryError> executionFailure(const FileDescriptor& status, const std::string& path);

} // namespace orrery
