#pragma once

#include "document/setup/SetupDictionary.h"

#include <optional>
#include <string>
#include <string_view>

namespace orrery {

/// The path of the model file that a setup in that file names, absolute; an empty one stays empty.
[[nodiscard]] std::string absoluteModelPath(std::string_view modelPath, const std::string& setupFile);

/// The setup to write when one that was read from a file is saved as another file: a copy, with the model's path as
/// modelPathAfterMove has it.
[[nodiscard]] SetupDictionary setupAfterMove(const SetupDictionary& setup,
                                             const std::optional<std::string>& oldSetupFile,
                                             const std::string& newSetupFile);

/// The model path to write when the setup in one file is saved as another one, so that it names the same model file: as
/// it stands where both files lie in one directory, else absolute. Paths of result files are left alone: relative ones
/// belong to the folder of the setup, where each copy gets results of its own.
///
/// Without an old file a relative path counts from the current directory, but only where a file is there: otherwise it
/// names nothing yet, and counts from the new file's directory.
[[nodiscard]] std::string modelPathAfterMove(std::string_view modelPath, const std::optional<std::string>& oldSetupFile,
                                             const std::string& newSetupFile);

} // namespace orrery
