#include "plot/GlObjects.h"

#include "plot/Gl.h"
#include "plot/GlCheck.h"

namespace orrery {

void deleteBuffer(unsigned name) {
    glDeleteBuffers(1, &name);
}

void deleteTexture(unsigned name) {
    glDeleteTextures(1, &name);
}

GlBuffer makeVertexBuffer(std::size_t floats) {
    GLuint name = 0;
    glGenBuffers(1, &name);
    GlBuffer buffer(name);
    const BoundBuffer bound(buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(floats * sizeof(float)), nullptr, GL_STATIC_DRAW);
    if (glCheckError() != GL_NO_ERROR) {
        buffer.reset();
    }
    return buffer;
}

void writeBuffer(const GlBuffer& buffer, std::span<const float> floats) {
    const BoundBuffer bound(buffer);
    glBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(floats.size_bytes()), floats.data());
    glCheckError();
}

void readBuffer(const GlBuffer& buffer, std::span<float> floats) {
    const BoundBuffer bound(buffer);
    glGetBufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(floats.size_bytes()), floats.data());
    glCheckError();
}

float* mapBuffer(const GlBuffer& buffer) {
    const BoundBuffer bound(buffer);
    void* const memory = glMapBuffer(GL_ARRAY_BUFFER, GL_WRITE_ONLY);
    glCheckError();
    return static_cast<float*>(memory);
}

bool unmapBuffer(const GlBuffer& buffer) {
    const BoundBuffer bound(buffer);
    const bool whole = glUnmapBuffer(GL_ARRAY_BUFFER) == GL_TRUE;
    glCheckError();
    return whole;
}

SavedAttributes::SavedAttributes(unsigned bits) {
    glPushAttrib(bits);
}

SavedAttributes::~SavedAttributes() {
    glPopAttrib();
}

BoundBuffer::BoundBuffer(const GlBuffer& buffer) {
    glBindBuffer(GL_ARRAY_BUFFER, buffer.get());
}

BoundBuffer::~BoundBuffer() {
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

IdentityMatrices::IdentityMatrices() {
    glGetIntegerv(GL_MATRIX_MODE, &m_matrixMode);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
}

IdentityMatrices::~IdentityMatrices() {
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(static_cast<GLenum>(m_matrixMode));
}

} // namespace orrery
