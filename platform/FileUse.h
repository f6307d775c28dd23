#pragma once

#include <optional>
#include <string>
#include <utility>

namespace orrery {

/// Tells other programs of ours, and other parts of this one, that a file is in use; the system takes it back from a
/// program that ends. Many read a file at a time, and one alone may remove it. Move-only.
class FileUse {
public:
    enum class Kind { Shared, Alone };

    /// std::nullopt when another use is in the way, or, for use alone, the file was replaced meanwhile. Shared use is
    /// granted as well where the file system knows no locks.
    /// @throws OrreryError when the file cannot be opened, or cannot be locked for use alone
    [[nodiscard]] static std::optional<FileUse> tryBegin(const std::string& path, Kind kind);

    FileUse(FileUse&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileUse& operator=(FileUse&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    FileUse(const FileUse&) = delete;
    FileUse& operator=(const FileUse&) = delete;
    ~FileUse();

private:
    explicit FileUse(int descriptor) : m_descriptor(descriptor) {}

    int m_descriptor;
};

} // namespace orrery
