#pragma once

#include <optional>
#include <string>

namespace orrery {

/// What the user says of a kept run, in a small file beside the results file.
struct RunNotes {
    bool pinned = false;
    std::optional<std::string> note;
};

/// Where the notes of the results file lie.
[[nodiscard]] std::string runNotesPath(const std::string& resultsPath);

/// Those of the results file, none where there is no such file. A run with notes that cannot be read counts as pinned:
/// it may be.
[[nodiscard]] RunNotes readRunNotes(const std::string& resultsPath);

/// Replaces them. @throws OrreryError also when the note is too long
void writeRunNotes(const std::string& resultsPath, const RunNotes& notes);

} // namespace orrery
