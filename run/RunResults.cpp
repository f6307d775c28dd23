#include "run/RunResults.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orrery {

RunResults readRunResults(SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                          const TableReadOptions& options) {
    RunResults results{.grid = std::move(grid), .responses = {}, .table = {}, .notes = {}};
    results.responses = constructDependentVariables(tree, results.grid.variables, tablePath);
    results.table = readResultTable(tablePath, results.shape(), options);
    results.notes = results.responses.notes;
    std::ranges::move(results.table.notes(results.shape()), std::back_inserter(results.notes));
    return results;
}

RunResults readRunResults(const SetupDictionary& setup, const Calendar& calendar, const ModelTree& tree,
                          const std::string& tablePath, const TableReadOptions& options) {
    return readRunResults(constructIndependentVariables(setup, calendar), tree, tablePath, options);
}

} // namespace orrery
