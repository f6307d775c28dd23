#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orrery {

/// What the command line asks for.
struct LaunchOptions {
    std::vector<std::string> files; // absolute
    bool newInstance = false;       // do not hand the files to a program that runs already
    std::string picture;            // where to save a picture of the front window before ending; empty: do not end
};

/// Reads the arguments. Answers --help and --version, and reports wrong options; `exitCode` is then what to end with.
[[nodiscard]] std::optional<LaunchOptions> launchOptions(int argc, char** argv, int& exitCode);

} // namespace orrery
