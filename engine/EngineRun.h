#pragma once

#include "engine/Progress.h"
#include "platform/Calendar.h"

#include <string>

namespace orrery::engine {

/// Runs the setup file: reads it and its model, computes every row and leaves the result table in the temporary
/// directory (which ends in "/"), and in a spatial run the outputs' own files.
/// @throws OrreryError naming file, place and remedy, or Interrupted; no result file has been touched then
void runSetup(const std::string& setupPath, const std::string& temporaryDirectory, const Calendar& calendar,
              Progress& progress);

} // namespace orrery::engine
