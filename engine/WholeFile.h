#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orrery::engine {

/// A file that appears under its name only when it is whole: it is written under another name beside it and renamed
/// at the end. Move-only; what was not published is removed.
class WholeFile {
public:
    /// @throws OrreryError naming the path and the system's reason, or that something other than a file is there
    explicit WholeFile(std::string path);
    WholeFile(WholeFile&& other) noexcept;
    WholeFile& operator=(WholeFile&&) = delete;
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;
    ~WholeFile();

    /// A buffer to append to; call flushIfLarge() now and then.
    [[nodiscard]] std::string& buffer() { return m_buffer; }
    void flushIfLarge();
    /// Writes what is left, closes and renames. @throws OrreryError; the old file under the name is then unchanged
    void publish();

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    void flush();
    [[noreturn]] void fail(const std::string& what, int error) const;

    std::string m_path;
    std::string m_partPath;
    std::string m_buffer;
    int m_descriptor = -1;
};

} // namespace orrery::engine
