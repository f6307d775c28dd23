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

/// "1,000", or "998 of 1,000" where rows are missing.
[[nodiscard]] std::string rowsText(const KeptRunInfo& run);
/// How the engine ended, where that was not well; else empty.
[[nodiscard]] std::string badEnd(const KeptRunInfo& run);

} // namespace orrery
