#include "batch/Command.h"
#include "batch/SetupFiles.h"
#include "platform/OrreryError.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

namespace orrery {
namespace {

constexpr std::array commands{
    Command{"new", "Make a setup file", buildNewCommand},
    Command{"show", "Print a setup as JSON", buildShowCommand},
    Command{"rewrite", "Read a setup and write it again", buildRewriteCommand},
    Command{"model", "Print a model's levels, parts and ports as JSON", buildModelCommand},
    Command{"sweep", "Print the grid that a setup sweeps as JSON", buildSweepCommand},
    Command{"run", "Run a setup through the engine", buildRunCommand},
    Command{"results", "Print the results of a run as JSON or CSV", buildResultsCommand},
    Command{"plot", "Draw a plot of the results as a picture, or write its vertices", buildPlotCommand},
    Command{"report", "Print the results of a run for people", buildReportCommand},
};

int usage(const CLI::App& parser, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) { // --help, --version
        return parser.exit(error) == 0 && std::cout.flush() ? exitDone : exitFailed;
    }
    printMessage(std::string(error.what()) + ". Ask for the options with --help.");
    return exitUsage;
}

/// Our own word for a command that there is not, since the parser would only miss one.
void requireKnownCommand(int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-') {
        return;
    }
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const Command& command : commands) {
        names.emplace_back(command.name);
    }
    if (const std::string name = argv[1]; std::ranges::find(names, name) == names.end()) {
        throw CLI::ParseError("no command '" + quotedForMessage(name) + "'" + suggestion(name, names),
                              CLI::ExitCodes::ExtrasError);
    }
}

int run(int argc, char** argv) {
    CLI::App parser{"Orrery without a window: sets up, runs and reads parameter sweeps.", "orrery-batch"};
    parser.set_version_flag("--version", "orrery-batch " ORRERY_VERSION);
    parser.require_subcommand(1);
    std::vector<Action> actions;
    actions.reserve(commands.size());
    for (const Command& command : commands) {
        actions.push_back(command.build(*parser.add_subcommand(command.name, command.help)));
    }
    try {
        requireKnownCommand(argc, argv);
        parser.parse(argc, argv);
        for (std::size_t i = 0; i < commands.size(); ++i) {
            if (parser.got_subcommand(commands.at(i).name)) {
                return actions[i]();
            }
        }
        return exitUsage;
    } catch (const CLI::ParseError& error) {
        return usage(parser, error);
    }
}

} // namespace
} // namespace orrery

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away is a failed write, which is reported
    std::signal(SIGXFSZ, SIG_IGN); // so is a file beyond the size limit
    try {
        return orrery::run(argc, argv);
    } catch (const std::bad_alloc&) {
        orrery::printMessage("there is not enough memory. Close other programs, or choose a smaller grid.");
    } catch (const std::exception& error) {
        orrery::printMessage(error.what());
    }
    return orrery::exitFailed;
}
