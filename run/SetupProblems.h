#pragma once

#include "document/setup/SetupDictionary.h"
#include "model/PortFaults.h"
#include "platform/Calendar.h"
#include "run/SetupProblem.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace orrery {

/// What a setup is held against.
struct SetupSurroundings {
    PortFaults& ports;         // of the model that the setup names; an empty one where it could not be read
    std::size_t responses = 0; // recorded outputs of that model
    const Calendar& calendar;
    std::string setupPath = {}; // absolute; empty for a setup that has no file yet
    std::function<bool(const std::string&)> fileExists;
    std::function<std::uint64_t()> availableMemory; // in bytes
};

/// Everything that is known to be wrong with a setup before it is run: settings first, then the lists as the window
/// has them, row by row. The time it takes grows with the lists' rows, not faster.
[[nodiscard]] SetupProblems setupProblems(const SetupDictionary& setup, const SetupSurroundings& surroundings);

} // namespace orrery
