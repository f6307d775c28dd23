#pragma once

#include "document/setup/SetupDictionary.h"

#include <string>
#include <string_view>
#include <vector>

namespace orrery {

inline constexpr std::string_view companionServiceName = "Dorado Server";

/// Whether the setup's dimensions are exactly (1, 1): one result table, not one file per output.
[[nodiscard]] bool isSingleRun(const SetupDictionary& setup);

/// The files to hand over: the result table of a single run, otherwise every output's own file in list order, where
/// the run has written it: a relative path counts from the setup file's directory.
/// @throws OrreryError naming the port of an output that has no path
[[nodiscard]] std::vector<std::string> exportPaths(const SetupDictionary& setup, const std::string& tablePath,
                                                   std::string_view setupPath);

/// Whether all files to hand over exist; stops at the first that does not. No outputs: no.
[[nodiscard]] bool exportFilesExist(const SetupDictionary& setup, const std::string& tablePath,
                                    std::string_view setupPath);

} // namespace orrery
