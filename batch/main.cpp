#include "batch/Command.h"
#include "batch/SetupFiles.h"
#include "platform/Files.h"
#include "platform/SystemReason.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {
namespace {

int usage(const CLI::App& parser, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) { // --help, --version
        return parser.exit(error) == 0 && std::cout.flush() ? exitDone : exitFailed;
    }
    const std::string words = error.what(); // the parser's own end without a full stop
    const bool isSentence = words.ends_with('.') || words.ends_with('?');
    printMessage(words + (isSentence ? "" : ".") + " See --help for the options.");
    return exitUsage;
}

/// Our own word for a command that there is not, since the parser would only miss one.
void requireKnownCommand(int argc, char** argv) {
    if (argc < 2 || argv[1][0] == '-') {
        return;
    }
    std::vector<std::string> names;
    for (const Command& command : commands()) {
        names.emplace_back(command.name);
    }
    if (const std::string name = argv[1]; std::ranges::find(names, name) == names.end()) {
        throw CLI::ParseError("There is no command " + quoted(name) + "." + suggestion(name, names),
                              CLI::ExitCodes::ExtrasError);
    }
}

/// Becomes the program's larger half. Returns only when that fails.
int handOver(char** argv) {
    constexpr const char* program = "orrery-batch-qt";
    const std::optional<std::string> path = pathForAuxiliaryExecutable(program);
    if (path) {
        execv(path->c_str(), argv);
    }
    throw OrreryError(
        fmt::format("{} cannot be started: {}.", program, path ? systemReason(errno) : "it is not beside orrery-batch"),
        {}, "Install Orrery again.");
}

int run(int argc, char** argv) {
    CLI::App parser{"Orrery without a window: sets up, runs and reads parameter sweeps.", "orrery-batch"};
    parser.set_version_flag("--version", "orrery-batch " ORRERY_VERSION);
    parser.require_subcommand(1);
    std::vector<Action> actions;
    for (const Command& command : commands()) {
        CLI::App* const subcommand = parser.add_subcommand(command.name, command.help);
        actions.push_back(command.build != nullptr ? command.build(*subcommand) : Action());
        if (command.build == nullptr && argc > 1 && command.name == std::string_view(argv[1])) {
            return handOver(argv);
        }
    }
    try {
        requireKnownCommand(argc, argv);
        parser.parse(argc, argv);
        for (std::size_t i = 0; i < actions.size(); ++i) {
            if (parser.got_subcommand(commands()[i].name)) {
                return actions[i] ? actions[i]() : handOver(argv);
            }
        }
        return exitUsage;
    } catch (const LeftToLargerHalf&) {
        return handOver(argv);
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
        orrery::printMessage("There is not enough memory. Close other programs, or choose a smaller grid.");
    } catch (const std::exception& error) {
        orrery::printMessage(error.what());
    }
    return orrery::exitFailed;
}
