#pragma once

#include "platform/KnownFile.h"
#include "platform/Outlets.h"

#include <optional>
#include <string>

namespace orrery {

/// What the user is asked before the file at the path is written: what others have done to it since it was read or
/// written as `known`. The answers are those of OverwriteAnswer. std::nullopt when nobody else is concerned.
[[nodiscard]] std::optional<AlertText> overwriteQuestion(const KnownFile& known, const std::string& path);

enum class OverwriteAnswer : std::size_t { Save = 0, Cancel = 1, SaveAs = 2 };

} // namespace orrery
