#pragma once

#include <cstddef>
#include <span>
#include <utility>

// The views' headers include no OpenGL: a window has Qt's own, and the two do not go together in one file.
namespace orrery {

/// A GL name that deletes its object; move-only; 0 means none. Create, assign and destroy it while the context that it
/// belongs to is current. After the context is gone, release() forgets the name.
template <void (*Delete)(unsigned)>
class GlName {
public:
    GlName() = default;
    explicit GlName(unsigned name) : m_name(name) {}
    GlName(GlName&& other) noexcept : m_name(other.release()) {}
    GlName& operator=(GlName&& other) noexcept {
        if (this != &other) {
            reset(other.release());
        }
        return *this;
    }
    GlName(const GlName&) = delete;
    GlName& operator=(const GlName&) = delete;
    ~GlName() { reset(); }

    void reset(unsigned name = 0) {
        if (m_name != 0) {
            Delete(m_name);
        }
        m_name = name;
    }
    unsigned release() { return std::exchange(m_name, 0U); }
    [[nodiscard]] unsigned get() const { return m_name; }
    explicit operator bool() const { return m_name != 0; }

private:
    unsigned m_name = 0;
};

void deleteBuffer(unsigned name);
void deleteTexture(unsigned name);

using GlBuffer = GlName<deleteBuffer>;
using GlTexture = GlName<deleteTexture>;

/// A buffer object with room for that many floats, whose values are not settled; none when GL cannot hold them (the
/// error has been logged).
[[nodiscard]] GlBuffer makeVertexBuffer(std::size_t floats);
/// Copies between the beginning of the buffer and memory.
void writeBuffer(const GlBuffer& buffer, std::span<const float> floats);
void readBuffer(const GlBuffer& buffer, std::span<float> floats);
/// The buffer's memory, to be written only; nullptr when GL gives none. Nothing may be drawn from it until unmapBuffer,
/// which is false when the memory was lost meanwhile.
[[nodiscard]] float* mapBuffer(const GlBuffer& buffer);
[[nodiscard]] bool unmapBuffer(const GlBuffer& buffer);

/// Attribute state put back at the end of the scope.
class SavedAttributes {
public:
    explicit SavedAttributes(unsigned bits);
    ~SavedAttributes();
    SavedAttributes(const SavedAttributes&) = delete;
    SavedAttributes& operator=(const SavedAttributes&) = delete;
};

/// Projection and model-view matrix and the matrix mode put back at the end of the scope; within it the model-view
/// matrix is selected and both are the identity.
class IdentityMatrices {
public:
    IdentityMatrices();
    ~IdentityMatrices();
    IdentityMatrices(const IdentityMatrices&) = delete;
    IdentityMatrices& operator=(const IdentityMatrices&) = delete;

private:
    int m_matrixMode = 0;
};

/// The array buffer bound, and unbound at the end of the scope.
class BoundBuffer {
public:
    explicit BoundBuffer(const GlBuffer& buffer);
    ~BoundBuffer();
    BoundBuffer(const BoundBuffer&) = delete;
    BoundBuffer& operator=(const BoundBuffer&) = delete;
};

} // namespace orrery
