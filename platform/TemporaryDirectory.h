#pragma once

#include <string>

namespace orrery {

/// The user's temporary directory, ending in "/".
///
/// TMPDIR when the user set it (made absolute, must be a directory that can be written). Otherwise a directory of the
/// user's own under the runtime directory, else the cache directory, mode 0700, owner and mode checked, which is then
/// exported as TMPDIR so that a child sees the same one. Never a predictable name in a shared directory.
/// Call it first from the main thread, before any other starts.
/// @throws OrreryError naming the directory and what is wrong with it
[[nodiscard]] std::string temporaryDirectory();

} // namespace orrery
