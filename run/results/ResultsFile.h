#pragma once

#include "run/RunResults.h"
#include "run/results/RunRecord.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orrery {

// A results file is a NetCDF-4 file: a dimension and a coordinate variable for each sweep variable, in the grid's
// order, a variable of 32-bit floats for each response, a mask of the rows that were found, and the run's record in a
// group of its own. docs/results-file.md describes it.

/// A run as a file holds it.
struct KeptRun {
    RunResults results;
    RunRecord record;
};

/// Writes the run, in place of a file that may be there, whole or not at all.
/// @param progress is called now and then with the part that is written; what it throws ends the writing
/// @throws OrreryError also when there is not a row to keep, or there are more sweep variables than the format can have
void writeResultsFile(const std::string& path, const RunResults& results, const RunRecord& record,
                      const std::function<void(double)>& progress = {});

/// Turns a result table into such a file without holding it, and returns what was found of it without its cells.
/// @throws OrreryError as writeResultsFile, readRunResults
RunResults keepTable(const std::string& path, SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                     const RunRecord& record, const TableReadOptions& options = {});

/// Opens a results file: the cells stay in it and are read as they are needed, so it stays open as long as the results
/// are kept. Model, engine and setup need not be in place.
/// @throws OrreryError when it is not one, or a cut or damaged one, or written by a later version
[[nodiscard]] KeptRun openResultsFile(const std::string& path);

/// What a list of runs says of one, read without what takes time.
struct ResultsHeader {
    RunRecord record; // without the model's bytes and the engine's text
    std::uint32_t rows = 0;
    std::uint32_t rowsFound = 0;
    std::vector<std::string> notes; // on the results
};

/// @throws OrreryError as openResultsFile
[[nodiscard]] ResultsHeader readResultsHeader(const std::string& path);

} // namespace orrery
