#pragma once

#include "document/setup/SetupDictionary.h"

#include <string>
#include <string_view>

namespace orrery {

/// What a setup has that another one had not, in a line: "run length 200 (was 100); rainfall 1…5 by 1 (was 1…3 by 1);
/// output added: yield". Of many entries of a list only the first are named. Empty when nothing differs; numbers that
/// are written in two ways are the same.
[[nodiscard]] std::string setupDifference(const SetupDictionary& before, const SetupDictionary& after);

/// The same of the bytes of two setup files, or that one of them cannot be read.
[[nodiscard]] std::string setupDifference(std::string_view before, std::string_view after);

} // namespace orrery
