#include "batch/Command.h"
#include "batch/SetupFiles.h"

#include <array>

namespace orrery {

std::span<const Command> commands() {
    static constexpr std::array all{
        Command{"new", "Make a setup file", buildNewCommand},
        Command{"show", "Print a setup as JSON", buildShowCommand},
        Command{"rewrite", "Read a setup and write it again", buildRewriteCommand},
        Command{"model", "Print a model's levels, parts and ports as JSON", buildModelCommand},
        Command{"sweep", "Print the grid that a setup sweeps as JSON", buildSweepCommand},
        Command{"run", runHelp, nullptr},
        Command{"runs", runsHelp, nullptr},
        Command{"results", resultsHelp, buildResultsCommand},
        Command{"plot", plotHelp, nullptr},
        Command{"report", reportHelp, buildReportCommand},
    };
    return all;
}

void keepResults(const ResultSource& /*source*/, const std::string& /*path*/) {
    throw LeftToLargerHalf();
}

RunResults loadKeptResults(const std::string& /*path*/) {
    throw LeftToLargerHalf();
}

} // namespace orrery
