#pragma once

#include "document/setup/SetupDictionary.h"
#include "model/ModelTree.h"
#include "run/RunResults.h"
#include "run/SetupProblem.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace orrery {

/// The setup in the file. @throws OrreryError also when its bytes are no XML document
[[nodiscard]] SetupDictionary loadSetup(const std::string& setupPath);

/// The model that the setup in the file names. @throws OrreryError also when it names none
[[nodiscard]] ModelTree loadModel(const SetupDictionary& setup, const std::string& setupPath);

/// Says on standard error what is known to be wrong with the setup, a line each; nothing fails because of it.
void printProblems(const SetupDictionary& setup, const std::string& setupPath);
void printProblems(const SetupProblems& problems, const std::string& setupPath);

/// What a command reads results from: a setup and the table that it left, or a results file.
struct ResultSource {
    std::string file;  // the setup, or the results file
    std::string table; // of the setup; empty: the last run's. A results file has none.
    unsigned threads = 0;

    [[nodiscard]] std::string tablePath() const;
    /// The files that are read, for people.
    [[nodiscard]] std::vector<std::string> files() const;
};

/// Adds the options that choose the source to a command.
void addResultSource(CLI::App& parser, ResultSource& source);

/// Says what the user should know of the results on standard error, a line each.
void printNotes(const ResultSource& source, const RunResults& results);

/// Reads the results, a table by as many threads as pay or as are wanted. What the user should know of them goes to
/// standard error.
[[nodiscard]] RunResults loadResults(const ResultSource& source);

/// Reads a results file; the library for that takes as long to load as all else, so only the program's larger half has
/// it. @throws LeftToLargerHalf in the other
[[nodiscard]] RunResults loadKeptResults(const std::string& path);
/// Turns the source's table into a results file, whatever its size; what is known of the run goes with it.
/// @throws LeftToLargerHalf in the other half, too
void keepResults(const ResultSource& source, const std::string& path);
struct LeftToLargerHalf {};

/// " Did you mean “x”?" for the valid name that is nearest to the wrong one, or the valid ones when none is near.
[[nodiscard]] std::string suggestion(const std::string& wrong, const std::vector<std::string>& valid);

} // namespace orrery
