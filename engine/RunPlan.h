#pragma once

#include "document/setup/SetupDictionary.h"
#include "engine/PortNetwork.h"
#include "platform/Calendar.h"
#include "run/SweepVariables.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orrery::engine {

/// A value that the setup gives an input port, in one cell or in all.
struct PortAssignment {
    std::size_t port = 0;
    double value = 0;
    std::optional<std::size_t> cell;
};

/// An output's own result file.
struct OutputFile {
    std::size_t port = 0;
    std::string path;
};

/// What a setup asks of the engine, with every port found and every number checked.
struct RunPlan {
    SweepGrid grid;
    std::vector<std::size_t> stepperPorts; // of the grid's variables but "day", in their order
    std::vector<PortAssignment> initializations;
    std::vector<OutputFile> outputFiles; // none unless the run is spatial
    double stepDays = 0;                 // length of a time step
    double reportSteps = 0;              // time steps between two rows, not always whole
    std::size_t width = 1;
    std::size_t height = 1;

    [[nodiscard]] std::size_t cellCount() const { return width * height; }
    [[nodiscard]] bool spatial() const { return cellCount() != 1; }
    [[nodiscard]] const IndependentVariable& day() const { return grid.variables.back(); }
    [[nodiscard]] std::uint32_t combinations() const; // of stepper values
    /// Time steps from the start of the run to the row of that day index.
    [[nodiscard]] std::uint64_t stepsBefore(std::uint32_t dayIndex) const;
    [[nodiscard]] std::set<std::size_t> setPorts() const;
};

/// @throws OrreryError naming the setup file, the entry and the remedy
[[nodiscard]] RunPlan makeRunPlan(const SetupDictionary& setup, const PortNetwork& network,
                                  const std::string& setupPath, const Calendar& calendar);

} // namespace orrery::engine
