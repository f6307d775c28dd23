#include "batch/Command.h"
#include "batch/SetupFiles.h"
#include "platform/Calendar.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "run/ResultsMark.h"
#include "run/results/ResultsFile.h"

#include <array>

namespace orrery {

std::span<const Command> commands() {
    static constexpr std::array larger{
        Command{"run", runHelp, buildRunCommand}, Command{"plot", plotHelp, buildPlotCommand},
        Command{"runs", runsHelp, buildRunsCommand},
        // Of a results file, which the other half passes on.
        Command{"results", resultsHelp, buildResultsCommand}, Command{"report", reportHelp, buildReportCommand}};
    return larger;
}

RunResults loadKeptResults(const std::string& path) {
    return openResultsFile(path).results;
}

void keepResults(const ResultSource& source, const std::string& path) {
    if (looksLikeResultsFile(source.file)) {
        throw OrreryError("These results are kept already.", {.file = source.file}, "Copy the file.");
    }
    const SetupDictionary setup = loadSetup(source.file);
    const RunResults kept =
        keepTable(path, constructIndependentVariables(setup, currentCalendar()), loadModel(setup, source.file),
                  source.tablePath(), recordOfSetup(setup, absolutePath(source.file)));
    printNotes(source, kept);
}

} // namespace orrery
