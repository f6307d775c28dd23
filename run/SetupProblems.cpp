#include "run/SetupProblems.h"

#include "document/setup/ModelPath.h"
#include "document/setup/SetupForm.h"
#include "model/ModelObjects.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "run/ListProblems.h"
#include "run/NumberFaults.h"
#include "run/SweepVariables.h"
#include "run/table/ResultTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

namespace orrery {

namespace {

void addModelProblem(const SetupDictionary& setup, const SetupSurroundings& around, SetupProblems& problems) {
    const std::string path = resolvedPath(setup.textOrEmpty(setup_key::modelPath), around.setupPath);
    const auto add = [&](std::string words) {
        problems.add([&] { return SetupProblem{std::move(words), {std::string(setup_key::modelPath)}}; });
    };
    if (path.empty()) {
        add(std::string(noModelChosen));
    } else if (!around.fileExists(path)) {
        add(fmt::format("The model file {} does not exist.", quoted(path)));
    } else if (around.ports.tree().empty()) {
        add(fmt::format("The model file {} has not been read, so its ports are not known.", quoted(path)));
    }
}

/// Whether all settings that should be numbers are; what they come to can be judged only then.
bool addTimeFaults(const SetupDictionary& setup, SetupProblems& problems) {
    bool areNumbers = true;
    for (const setup_form::Setting& setting : setup_form::settings) {
        if (setting.kind != setup_form::Kind::Number) continue;
        const auto fault = numberFault(setup.textOrEmpty(setting.key), setting.countsAs);
        if (!fault) continue;
        areNumbers = false;
        problems.add([&] {
            return SetupProblem{capitalized(fmt::format("{} {}.", setting.userWord, fault->words)),
                                {std::string(setting.key)},
                                mendsOf(*fault)};
        });
    }
    return areNumbers;
}

void addTimeProblems(const SetupDictionary& setup, SetupProblems& problems) {
    if (!addTimeFaults(setup, problems)) return;
    if (floatValue(setup.textOrEmpty(setup_key::runLength)) == 0) {
        problems.add([] {
            return SetupProblem{"Run length is 0 and counts as 1 day.", {std::string(setup_key::runLength)}};
        });
    }
    if (dayCount(setup) >= 1) return;
    problems.add([&] {
        const SettingWarning warning = noDaysWarning(setup);
        return SetupProblem{warning.words, {std::string(warning.key)}};
    });
}

void addDimensionsProblem(const SetupDictionary& setup, SetupProblems& problems) {
    const std::string_view text = setup.textOrEmpty(setup_key::dimensions);
    const auto isCount = [](double number) { return number >= 1 && number == std::floor(number); };
    const Point size = pointFromString(text);
    const std::optional<NumberFault> fault = pairFault(text);
    if (!fault && isCount(size.x) && isCount(size.y)) return;
    problems.add([&] {
        const std::string words = fault ? fault->words : quoted(text) + "; both must be whole numbers from 1 on";
        return SetupProblem{fmt::format("Dimensions are {}.", words),
                            {std::string(setup_key::dimensions)},
                            {{"Use { 1, 1 }", "{ 1, 1 }"}}};
    });
}

/// Where a grid that is too large can be made smaller: at the stepper with the most values, or the report step.
SetupPlace placeOfSize(const SetupDictionary& setup) {
    SetupPlace place{std::string(setup_key::reportStep)};
    double most = dayCount(setup);
    const EntryList& steppers = setup.entries(setup_key::steppers);
    for (std::size_t row = 0; row < steppers.size(); ++row) {
        const auto value = [&](std::string_view key) { return floatValue(steppers[row].text(key)); };
        const double count = stepperCount(value("start"), value("stop"), value("step"));
        if (count <= most) continue;
        most = count;
        place = {std::string(setup_key::steppers), row, "step"};
    }
    return place;
}

/// Words of an error without its place.
std::string sentences(const OrreryError& error) {
    return error.remedy().empty() ? error.problem() : error.problem() + " " + error.remedy();
}

void addSizeProblem(const SetupDictionary& setup, const SetupSurroundings& around, SetupProblems& problems) {
    constexpr std::uint64_t alwaysThere = 16U << 20U; // bytes, for which the system is not asked
    const auto add = [&](const OrreryError& error) {
        problems.add([&] { return SetupProblem{sentences(error), placeOfSize(setup)}; });
    };
    try {
        const SweepGrid grid = constructIndependentVariables(setup, around.calendar);
        const TableShape shape{grid.nRowsOfData, grid.variables.size() + 1, around.responses};
        if (!blockFault(shape, alwaysThere)) return;
        if (const auto fault = blockFault(shape, around.availableMemory())) add(*fault);
    } catch (const OrreryError& error) {
        add(error);
    }
}

} // namespace

std::string SetupProblems::moreWords() const {
    return more == 0 ? "" : fmt::format("and {} more {}", more, more == 1 ? "problem" : "problems");
}

void SetupProblems::append(SetupProblems others) {
    for (SetupProblem& problem : others.shown) {
        add([&problem] { return std::move(problem); });
    }
    more += others.more;
}

SetupProblems setupProblems(const SetupDictionary& setup, const SetupSurroundings& surroundings) {
    SetupProblems problems;
    addModelProblem(setup, surroundings, problems);
    addTimeProblems(setup, problems);
    addDimensionsProblem(setup, problems);
    addSizeProblem(setup, surroundings, problems);
    addOutputProblems(setup, surroundings, problems);
    addInputProblems(setup, surroundings, problems);
    return problems;
}

} // namespace orrery
