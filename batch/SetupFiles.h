#pragma once

#include "document/setup/SetupDictionary.h"
#include "model/ModelTree.h"
#include "run/RunResults.h"
#include "run/SetupProblem.h"

#include <string>

namespace orrery {

/// The setup in the file. @throws OrreryError also when its bytes are no XML document
[[nodiscard]] SetupDictionary loadSetup(const std::string& setupPath);

/// The model that the setup in the file names. @throws OrreryError also when it names none
[[nodiscard]] ModelTree loadModel(const SetupDictionary& setup, const std::string& setupPath);

/// Says on standard error what is known to be wrong with the setup, a line each; nothing fails because of it.
void printProblems(const SetupDictionary& setup, const std::string& setupPath);
void printProblems(const SetupProblems& problems, const std::string& setupPath);

/// The result table that a command reads: the one named, or the last run's in the temporary directory.
[[nodiscard]] std::string tablePathOr(const std::string& tablePath);

/// Reads the results of the setup from the table, by as many threads as pay or as are wanted. What the user should know
/// of the table goes to standard error.
[[nodiscard]] RunResults loadResults(const std::string& setupPath, const std::string& tablePath, unsigned threads = 0);

/// " Did you mean “x”?" for the valid name that is nearest to the wrong one, or the valid ones when none is near.
[[nodiscard]] std::string suggestion(const std::string& wrong, const std::vector<std::string>& valid);

} // namespace orrery
