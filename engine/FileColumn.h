#pragma once

#include "engine/LookupTable.h"

#include <string>
#include <string_view>

namespace orrery::engine {

/// One column of a text file over its first one. The file's first line holds the labels, every other line numbers,
/// all separated by blanks or tabs; empty lines and lines that begin with "#" are passed over.
/// @param place of the part that names the file, and `owner` what it is, for messages
/// @throws OrreryError naming the file, the line and the remedy
[[nodiscard]] LookupTable fileColumn(const std::string& path, std::string_view label, const Place& place,
                                     const std::string& owner);

} // namespace orrery::engine
