#pragma once

#include "document/setup/SetupDictionary.h"
#include "platform/Calendar.h"
#include "run/SweepVariables.h"

#include <cstddef>
#include <string>

namespace orrery {

/// "12 × 4 × 100 = 4,800 rows"
[[nodiscard]] std::string gridSizeText(const SweepGrid& grid);

/// What a setup's sweep comes to, before it is run: "12 × 4 × 100 = 4,800 rows, about 0.4 MB". Empty when its grid
/// cannot be laid out.
/// @param responses the number of recorded outputs of the model. The size is that of the result table's text.
[[nodiscard]] std::string sweepSummary(const SetupDictionary& setup, const Calendar& calendar, std::size_t responses);

} // namespace orrery
