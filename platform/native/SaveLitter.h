#pragma once

#include <string>

namespace orrery {

/// A short name for a temporary file of a save, which nobody can foresee. Saves hold a lock (flock) on such a file, so
/// that it can be told from one that a killed program left behind.
/// @throws OrreryError when the system gives no random number
[[nodiscard]] std::string unforeseenSaveName();

/// Removes from the directory what killed saves of this user left there: files of that form that nobody has locked and
/// that are older than a minute. Does what it can and reports nothing.
void removeSaveLitter(int directory);

} // namespace orrery
