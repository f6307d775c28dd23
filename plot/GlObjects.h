#pragma once

#include "platform/Pixels.h"
#include "plot/Gl.h"

#include <cstddef>
#include <span>
#include <utility>

namespace orrery {

/// A GL name that deletes its object; move-only; 0 means none. Create, assign and destroy it while the context that it
/// belongs to is current. After the context is gone, release() forgets the name.
template <void (*Delete)(GLuint)>
class GlName {
public:
    GlName() = default;
    explicit GlName(GLuint name) : m_name(name) {}
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

    void reset(GLuint name = 0) {
        if (m_name != 0) {
            Delete(m_name);
        }
        m_name = name;
    }
    GLuint release() { return std::exchange(m_name, 0U); }
    [[nodiscard]] GLuint get() const { return m_name; }
    explicit operator bool() const { return m_name != 0; }

private:
    GLuint m_name = 0;
};

inline void deleteBuffer(GLuint name) {
    glDeleteBuffers(1, &name);
}
inline void deleteTexture(GLuint name) {
    glDeleteTextures(1, &name);
}

using GlBuffer = GlName<deleteBuffer>;
using GlTexture = GlName<deleteTexture>;

/// A buffer object filled once with the floats; none when GL cannot hold them (the error has been logged).
[[nodiscard]] GlBuffer makeVertexBuffer(std::span<const float> data);

/// Attribute state put back at the end of the scope.
class SavedAttributes {
public:
    explicit SavedAttributes(GLbitfield bits) { glPushAttrib(bits); }
    ~SavedAttributes() { glPopAttrib(); }
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
    GLint m_matrixMode = GL_MODELVIEW;
};

/// The array buffer bound, and unbound at the end of the scope.
class BoundBuffer {
public:
    explicit BoundBuffer(const GlBuffer& buffer) { glBindBuffer(GL_ARRAY_BUFFER, buffer.get()); }
    ~BoundBuffer() { glBindBuffer(GL_ARRAY_BUFFER, 0); }
    BoundBuffer(const BoundBuffer&) = delete;
    BoundBuffer& operator=(const BoundBuffer&) = delete;
};

} // namespace orrery
