#pragma once

#include "document/setup/SetupDictionary.h"
#include "platform/Date.h"
#include "run/SweepVariables.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orrery {

/// "12 × 4 × 100 = 4,800 rows"
[[nodiscard]] std::string gridSizeText(const SweepGrid& grid);

/// What a setup's sweep comes to, before it is run.
struct SweepSummary {
    std::string size; // "12 × 4 × 100 = 4,800 rows, about 0.4 MB"; empty when it cannot be run at all
    std::vector<std::string> problems; // one line each
};

/// @param responses the number of recorded outputs of the model. The size is that of the result table's text.
[[nodiscard]] SweepSummary summarizeSweep(const SetupDictionary& setup, const Calendar& calendar,
                                          std::size_t responses);

} // namespace orrery
