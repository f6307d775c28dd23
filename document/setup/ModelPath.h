#pragma once

#include <string>
#include <string_view>

namespace orrery {

/// The path that a setup file names: an absolute one as it stands, a relative one from the setup file's directory, so
/// that a folder of setups and models can be moved. Used for the model's path and for the outputs' result files.
/// An empty path stays empty; without a setup file a relative path stays as it is. Nothing is opened.
[[nodiscard]] std::string resolvedPath(std::string_view path, std::string_view setupFilePath);

} // namespace orrery
