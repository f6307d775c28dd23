#pragma once

#include "document/setup/SetupDictionary.h"
#include "run/results/RunRecord.h"

#include <string>

namespace orrery {

/// What the files say of a run of the setup, as they are now: nothing of the engine, and no times.
[[nodiscard]] RunRecord recordOfSetup(const SetupDictionary& setup, const std::string& setupPath);

} // namespace orrery
