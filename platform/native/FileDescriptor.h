#pragma once

#include <unistd.h>

#include <utility>

namespace orrery {

/// An open descriptor, closed with the object; move-only; -1 means none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { reset(); }

    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int release() { return std::exchange(m_descriptor, -1); }
    void reset() {
        if (m_descriptor >= 0) ::close(std::exchange(m_descriptor, -1));
    }

private:
    int m_descriptor = -1;
};

} // namespace orrery
