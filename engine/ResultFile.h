#pragma once

#include "platform/Files.h"

#include <memory>
#include <string>

namespace orrery::engine {

/// A file of results, written in large pieces. It appears under its name only when it is whole.
class ResultFile {
public:
    /// @throws OrreryError as FileReplacement, and so do the others
    explicit ResultFile(const std::string& path);

    /// A buffer to append to; call flushIfLarge() now and then.
    [[nodiscard]] std::string& buffer() { return m_buffer; }
    void flushIfLarge();
    /// Writes what is left and puts the file in place.
    void publish();

private:
    void flush();

    std::unique_ptr<FileReplacement> m_file;
    std::string m_buffer;
};

} // namespace orrery::engine
