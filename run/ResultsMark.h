#pragma once

#include <string>

namespace orrery {

/// The usual ending of a results file's name.
inline constexpr const char* resultsFileEnding = ".nc";

/// Whether the file's first bytes are those of a results file (NetCDF-4). False for a file that cannot be read.
[[nodiscard]] bool looksLikeResultsFile(const std::string& path);

} // namespace orrery
