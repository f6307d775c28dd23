#pragma once

#include <string>

namespace orrery {

/// A directory of the user's own, ending in "/", for what Orrery's programs leave there for each other: under the
/// runtime directory, else the cache directory, mode 0700, owner and mode checked. Never a predictable name in a shared
/// directory.
/// @throws OrreryError naming the directory and what is wrong with it
[[nodiscard]] std::string privateDirectory();

/// The user's temporary directory, ending in "/".
///
/// TMPDIR when the user set it (made absolute, must be a directory that can be written). Otherwise the private one,
/// which is then exported as TMPDIR so that a child sees the same one.
/// Call it first from the main thread, before any other starts.
/// @throws OrreryError naming the directory and what is wrong with it
[[nodiscard]] std::string temporaryDirectory();

} // namespace orrery
