#pragma once

#include <QString>
#include <string>

namespace orrery {

// Paths as a person reads them; characters that would act on the text (line ends, escapes) are shown escaped.

[[nodiscard]] QString shownFileName(const std::string& path);
[[nodiscard]] QString shownFolder(const std::string& path); // of the file, "~" for the home directory
[[nodiscard]] QString shownPath(const std::string& path);   // with "~"
/// "crop.orrery — ~/sweeps"
[[nodiscard]] QString shownNameAndFolder(const std::string& path);

/// Whether the paths name one file: by text, or by what the system finds there (links, relative paths).
[[nodiscard]] bool isSameFile(const std::string& path, const std::string& other);

} // namespace orrery
