#pragma once

#include "platform/Files.h"
#include "platform/values/Date.h"

#include <sys/stat.h>

#include <cstdint>
#include <string>

namespace orrery {

/// What a file of that mode (of struct stat) is when it is not a regular file: "a directory", "a named pipe", …
[[nodiscard]] std::string fileKind(unsigned mode);

[[nodiscard]] FileIdentity identityOf(const struct stat& status);

/// As readWholeFile.
[[nodiscard]] std::string wholeContents(const ReadableFile& file, std::uint64_t limit);

/// @throws OrreryError when the file's size or date now differ from the bytes that were read and the date before
void requireUnchanged(const ReadableFile& file, std::uint64_t bytesRead, const Date& dateBefore);

} // namespace orrery
