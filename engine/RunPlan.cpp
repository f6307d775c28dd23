#include "engine/RunPlan.h"

#include "document/setup/ModelPath.h"
#include "engine/LookupTable.h"
#include "platform/values/Numbers.h"
#include "platform/values/Quoted.h"

#include <cmath>
#include <utility>

namespace orrery::engine {

namespace {

constexpr double mostCells = 1000000;

/// The entries of one list of the setup, with what messages need.
struct EntrySource {
    const PortNetwork& network;
    const std::string& setupPath;
    std::string kind; // "initialization"

    [[nodiscard]] std::string label(std::size_t index, const Entry& entry) const {
        return kind + " " + std::to_string(index + 1) + " (" + quoted(entry.text("portPath")) + ")";
    }
    [[nodiscard]] std::size_t port(std::size_t index, const Entry& entry, PortDirection direction) const {
        const std::string_view path = entry.text("portPath");
        if (path.empty()) {
            throw OrreryError(kind + " " + std::to_string(index + 1) + " has no port.", {setupPath},
                              "Drop a port on it, or remove it.");
        }
        return network.portAt(path, direction, {setupPath});
    }
};

/// The cell of a point in a grid whose cells are counted from 1; none for (0, 0), which stands for all cells.
std::optional<std::size_t> cellAt(const Point& point, const RunPlan& plan, const std::string& setupPath,
                                  const std::string& label) {
    if (point == Point{}) {
        return std::nullopt;
    }
    const auto inside = [](double value, std::size_t count) {
        return value >= 1 && value <= static_cast<double>(count) && value == std::floor(value);
    };
    if (!inside(point.x, plan.width) || !inside(point.y, plan.height)) {
        throw OrreryError(label + ": the coordinates are not those of a cell of the " + std::to_string(plan.width) +
                              " x " + std::to_string(plan.height) + " grid.",
                          {setupPath}, "Count columns and rows from 1, or write { 0, 0 } for every cell.");
    }
    return (static_cast<std::size_t>(point.y) - 1) * plan.width + static_cast<std::size_t>(point.x) - 1;
}

/// A value as tables show it, with or without braces around it.
double assignedValue(std::string_view text, const std::string& setupPath, const std::string& label) {
    if (text.starts_with('{') && text.ends_with('}') && text.size() > 1) {
        text = text.substr(1, text.size() - 2);
    }
    return numberIn(text, {setupPath}, label);
}

void planGridOfCells(const SetupDictionary& setup, RunPlan& plan, const std::string& setupPath) {
    const Point size = pointFromString(setup.textOrEmpty(setup_key::dimensions));
    const auto whole = [](double count) { return count >= 1 && count <= mostCells && count == std::floor(count); };
    if (!whole(size.x) || !whole(size.y) || size.x * size.y > mostCells) {
        throw OrreryError("The dimensions " + quoted(setup.textOrEmpty(setup_key::dimensions)) +
                              " are not a pair of counts.",
                          {setupPath}, "Write { width, height }, at most a million cells; { 1, 1 } for one.");
    }
    plan.width = static_cast<std::size_t>(size.x);
    plan.height = static_cast<std::size_t>(size.y);
}

void planTime(const SetupDictionary& setup, RunPlan& plan, const std::string& setupPath) {
    const float stepsPerDay = floatValue(setup.textOrEmpty(setup_key::stepsPerDay));
    plan.stepDays = 1 / static_cast<double>(stepsPerDay);
    plan.reportSteps = static_cast<double>(floatValue(setup.textOrEmpty(setup_key::reportStep)));
    if (!(stepsPerDay > 0) || !std::isfinite(stepsPerDay) || !(plan.reportSteps > 0)) {
        throw OrreryError("The steps per day and the report step must be above 0.", {setupPath},
                          "Set them, for example 10 steps a day and a report every 10 steps.");
    }
}

void planInitializations(const SetupDictionary& setup, RunPlan& plan, const EntrySource& source) {
    const EntryList& entries = setup.entries(setup_key::initializations);
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const Entry& entry = entries[index];
        const std::string label = source.label(index, entry);
        plan.initializations.push_back(
            {source.port(index, entry, PortDirection::Input),
             assignedValue(entry.text("value"), source.setupPath, label),
             cellAt(pointFromString(entry.text("coordinates")), plan, source.setupPath, label)});
    }
}

void planOutputs(const SetupDictionary& setup, RunPlan& plan, const EntrySource& source) {
    const EntryList& entries = setup.entries(setup_key::outputs);
    std::set<std::string> paths;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const Entry& entry = entries[index];
        if (entry.text("portPath").empty() && !plan.spatial()) {
            continue;
        } // a row not filled in yet
        const std::size_t port = source.port(index, entry, PortDirection::Output);
        if (!plan.spatial()) {
            continue;
        }
        std::string path = resolvedPath(entry.text("outputPath"), source.setupPath);
        if (path.empty() || !paths.insert(path).second) {
            throw OrreryError(source.label(index, entry) + (path.empty() ? " has no" : " has another's") +
                                  " output path.",
                              {source.setupPath}, "Give every output a file of its own; the dimensions ask for one.");
        }
        plan.outputFiles.push_back({port, std::move(path)});
    }
}

} // namespace

std::uint32_t RunPlan::combinations() const {
    return day().stridesPerCycle() == 0 ? 0 : grid.nRowsOfData / day().stridesPerCycle();
}

std::uint64_t RunPlan::stepsBefore(std::uint32_t dayIndex) const {
    return static_cast<std::uint64_t>(std::llround(dayIndex * reportSteps));
}

std::set<std::size_t> RunPlan::setPorts() const {
    std::set<std::size_t> ports(stepperPorts.begin(), stepperPorts.end());
    for (const PortAssignment& initialization : initializations) {
        ports.insert(initialization.port);
    }
    return ports;
}

RunPlan makeRunPlan(const SetupDictionary& setup, const PortNetwork& network, const std::string& setupPath,
                    const Calendar& calendar) {
    RunPlan plan;
    plan.grid = constructIndependentVariables(setup, calendar);
    planGridOfCells(setup, plan, setupPath);
    planTime(setup, plan, setupPath);
    const EntryList& steppers = setup.entries(setup_key::steppers);
    const EntrySource stepperSource{network, setupPath, "stepper"};
    for (std::size_t index = 0; index < steppers.size(); ++index) {
        plan.stepperPorts.push_back(stepperSource.port(index, steppers[index], PortDirection::Input));
    }
    planInitializations(setup, plan, {network, setupPath, "initialization"});
    planOutputs(setup, plan, {network, setupPath, "output"});
    return plan;
}

} // namespace orrery::engine
