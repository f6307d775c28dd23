#include "batch/Command.h"
#include "batch/SetupFiles.h"
#include "run/results/ResultsFile.h"

#include <array>

namespace orrery {

std::span<const Command> commands() {
    static constexpr std::array larger{
        Command{"run", runHelp, buildRunCommand}, Command{"plot", plotHelp, buildPlotCommand},
        // Of a results file, which the other half passes on.
        Command{"results", resultsHelp, buildResultsCommand}, Command{"report", reportHelp, buildReportCommand}};
    return larger;
}

RunResults loadKeptResults(const std::string& path) {
    return readResultsFile(path).results;
}

} // namespace orrery
