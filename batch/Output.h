#pragma once

#include "platform/Files.h"

#include <optional>
#include <string>
#include <string_view>

namespace orrery {

/// Asked while a write waits for a reader who may never come: from the moment it says yes, what cannot be written at
/// once is given up. Without it, writes wait as long as it takes.
void giveUpWritesWhen(bool (*asked)());

/// Where a command's result goes: standard output, or a file that appears whole at the end.
class Output {
public:
    /// `target`: a file's path, or "-" for standard output.
    explicit Output(const std::string& target);

    void write(std::string_view text);
    /// Puts out what is still held. Without it a file is left as it was.
    /// @throws OrreryError when the target did not take everything, as write() does
    void finish();

private:
    void flush();

    std::optional<FileReplacement> m_file; // none: standard output
    std::string m_held;
};

} // namespace orrery
