#pragma once

#include "log/LogText.h"
#include "platform/Outlets.h"

#include <string>

namespace orrery {

/// Replaces the file at the path by the whole text, on another thread while the panel waits; the text must not change
/// meanwhile. False when the user has cancelled: the old file is then unchanged.
/// @throws OrreryError as replaceFile
[[nodiscard]] bool saveLog(const LogText& text, const std::string& path, WaitPanel& panel);

} // namespace orrery
