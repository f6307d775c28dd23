#include "run/RunResults.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orrery {

RunResults readResponses(SweepGrid grid, const ModelTree& tree, const std::string& tablePath) {
    RunResults results{.grid = std::move(grid), .responses = {}, .table = {}, .notes = {}, .stored = {}};
    results.responses = constructDependentVariables(tree, results.grid.variables, tablePath);
    results.notes = results.responses.notes;
    return results;
}

void addTableNotes(RunResults& results) {
    std::ranges::move(results.table.notes(results.shape()), std::back_inserter(results.notes));
}

RunResults readRunResults(SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                          const TableReadOptions& options) {
    RunResults results = readResponses(std::move(grid), tree, tablePath);
    results.table = readResultTable(tablePath, results.shape(), options);
    addTableNotes(results);
    return results;
}

RunResults readRunResults(const SetupDictionary& setup, const Calendar& calendar, const ModelTree& tree,
                          const std::string& tablePath, const TableReadOptions& options) {
    return readRunResults(constructIndependentVariables(setup, calendar), tree, tablePath, options);
}

} // namespace orrery
