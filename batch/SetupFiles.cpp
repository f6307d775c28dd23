#include "batch/SetupFiles.h"

#include "batch/Command.h"
#include "document/setup/ModelPath.h"
#include "document/setup/SetupReader.h"
#include "model/ModelObjects.h"
#include "platform/Files.h"
#include "platform/TemporaryDirectory.h"
#include "platform/values/EditDistance.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "run/ResultsMark.h"
#include "run/SetupProblems.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace orrery {
SetupDictionary loadSetup(const std::string& setupPath) {
    LoadedSetup loaded = readSetup(readWholeFile(setupPath), setupPath);
    if (!loaded.parsed) {
        throw OrreryError(loaded.fault);
    }
    return std::move(loaded.dictionary);
}

ModelTree loadModel(const SetupDictionary& setup, const std::string& setupPath) {
    const std::string modelPath = resolvedPath(setup.textOrEmpty(setup_key::modelPath), setupPath);
    if (modelPath.empty()) {
        throw OrreryError(std::string(noModelChosen), {.file = setupPath},
                          "Choose one in Orrery, or with the option --model of orrery-batch new.");
    }
    return readModelTree(modelPath);
}

void printProblems(const SetupDictionary& setup, const std::string& setupPath) {
    const std::string absolute = absolutePath(setupPath);
    const std::string modelPath = resolvedPath(setup.textOrEmpty(setup_key::modelPath), absolute);
    ModelTree model;
    try {
        if (!modelPath.empty() && fileExists(modelPath)) model = readModelTree(modelPath);
    } catch (const OrreryError& error) {
        printMessage(error.what());
    }
    PortFaults ports(model);
    printProblems(setupProblems(setup, {.ports = ports,
                                        .responses = recorderCount(model),
                                        .calendar = currentCalendar(),
                                        .setupPath = absolute,
                                        .fileExists = fileExists,
                                        .availableMemory = availableMemory}),
                  setupPath);
}

void printProblems(const SetupProblems& problems, const std::string& setupPath) {
    for (const SetupProblem& problem : problems.shown) {
        printMessage(fmt::format("{}: {}", setupPath, problem.words));
    }
    if (problems.more > 0) printMessage(fmt::format("{}: {}", setupPath, problems.moreWords()));
}

std::string ResultSource::tablePath() const {
    return table.empty() ? resultTablePath(temporaryDirectory()) : table;
}

std::vector<std::string> ResultSource::files() const {
    return looksLikeResultsFile(file) ? std::vector{file} : std::vector{file, tablePath()};
}

void addResultSource(CLI::App& parser, ResultSource& source) {
    parser.add_option("FILE", source.file, "The setup file that was run, or a results file")->required();
    parser.add_option("--table", source.table, "The result table of the setup (default: the last run's)");
}

namespace {

RunResults readSource(const ResultSource& source) {
    if (looksLikeResultsFile(source.file)) {
        if (source.table.empty()) return loadKeptResults(source.file);
        throw OrreryError("A results file has no result table beside it.", {.file = source.file},
                          "Leave out --table, or name the setup.");
    }
    const SetupDictionary setup = loadSetup(source.file);
    TableReadOptions reading;
    reading.threads = source.threads;
    return readRunResults(setup, currentCalendar(), loadModel(setup, source.file), source.tablePath(), reading);
}

} // namespace

void printNotes(const ResultSource& source, const RunResults& results) {
    for (const std::string& note : results.notes) {
        printMessage(fmt::format("{}: {}", source.files().back(), note));
    }
}

RunResults loadResults(const ResultSource& source) {
    RunResults results = readSource(source);
    printNotes(source, results);
    return results;
}

std::string suggestion(const std::string& wrong, const std::vector<std::string>& valid) {
    if (valid.empty()) {
        return " There are none to choose from.";
    }
    const auto distance = [&](const std::string& name) { return editDistance(wrong, name); };
    const std::string& nearest = *std::ranges::min_element(valid, {}, distance);
    if (distance(nearest) <= std::max<std::size_t>(2, nearest.size() / 3)) {
        return " Did you mean " + quoted(nearest) + "?";
    }
    return " There is " + listed(valid) + ".";
}

} // namespace orrery
