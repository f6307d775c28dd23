#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace orrery {

inline constexpr int exitDone = 0;
inline constexpr int exitFailed = 1;
inline constexpr int exitUsage = 2;
inline constexpr int exitInterrupted = 130;

/// What a subcommand does once its options are read; returns the program's exit code.
using Action = std::function<int()>;

/// A subcommand: `build` adds its options to the parser and returns what it does with them. Without one the command is
/// left to the program's larger half, orrery-batch-qt.
struct Command {
    const char* name;
    const char* help;
    Action (*build)(CLI::App& parser);
};
/// Those of this program, in the order in which its help tells them.
[[nodiscard]] std::span<const Command> commands();

inline constexpr const char* runHelp = "Run a setup through the engine";
inline constexpr const char* runsHelp = "List the runs that were kept, and say which are to stay";
inline constexpr const char* resultsHelp = "Print the results of a run as JSON or CSV";
inline constexpr const char* reportHelp = "Print the results of a run for people";
inline constexpr const char* plotHelp = "Draw a plot of the results as a picture, or write its vertices";

[[nodiscard]] Action buildNewCommand(CLI::App& parser);
[[nodiscard]] Action buildShowCommand(CLI::App& parser);
[[nodiscard]] Action buildRewriteCommand(CLI::App& parser);
[[nodiscard]] Action buildModelCommand(CLI::App& parser);
[[nodiscard]] Action buildSweepCommand(CLI::App& parser);
[[nodiscard]] Action buildRunCommand(CLI::App& parser);
[[nodiscard]] Action buildRunsCommand(CLI::App& parser);
[[nodiscard]] Action buildResultsCommand(CLI::App& parser);
[[nodiscard]] Action buildPlotCommand(CLI::App& parser);
[[nodiscard]] Action buildReportCommand(CLI::App& parser);

/// Writes the text to standard error as it is. What cannot be written is lost: nothing is left to tell it to.
void writeToStandardError(std::string_view text);
/// Writes "orrery-batch: " and the message to standard error, as one line in one write.
void printMessage(std::string_view message);

} // namespace orrery
