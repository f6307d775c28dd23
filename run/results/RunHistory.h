#pragma once

#include "run/results/RunStore.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orrery {

/// Of each run what its setup has that the run of the same setup before it had not, in words (see setupDifference);
/// std::nullopt for the first run of a setup. @param runs the newest first, as RunStore lists them
[[nodiscard]] std::vector<std::optional<std::string>> changesSinceRunBefore(std::span<const KeptRunInfo> runs);

} // namespace orrery
