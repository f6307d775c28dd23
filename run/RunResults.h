#pragma once

#include "document/setup/SetupDictionary.h"
#include "model/ModelTree.h"
#include "platform/Calendar.h"
#include "run/ResponseVariables.h"
#include "run/StoredCells.h"
#include "run/SweepVariables.h"
#include "run/table/ResultTable.h"

#include <memory>
#include <string>
#include <vector>

namespace orrery {

/// The results of one run: what was swept, what was recorded, and the numbers.
struct RunResults {
    SweepGrid grid;
    ResponseVariables responses;
    ResultTable table;                         // one row per point of the grid, one column per response variable
    std::vector<std::string> notes;            // what the user should know, one sentence or two each
    std::shared_ptr<const StoredCells> stored; // where the table's cells lie, when it does not hold them

    [[nodiscard]] TableShape shape() const {
        return {grid.nRowsOfData, grid.variables.size() + 1, responses.variables.size()};
    }
};

/// The results of a table without its rows: what was recorded, and the notes on the header. @throws as
/// constructDependentVariables
[[nodiscard]] RunResults readResponses(SweepGrid grid, const ModelTree& tree, const std::string& tablePath);
/// Adds what the user should know of the table's rows.
void addTableNotes(RunResults& results);

/// Reads the results that a run over the grid left in the table at the path.
/// @throws as constructDependentVariables and readResultTable
[[nodiscard]] RunResults readRunResults(SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                                        const TableReadOptions& options = {});

/// The same over the grid that the setup sweeps. @throws as constructIndependentVariables, too
[[nodiscard]] RunResults readRunResults(const SetupDictionary& setup, const Calendar& calendar, const ModelTree& tree,
                                        const std::string& tablePath, const TableReadOptions& options = {});

} // namespace orrery
