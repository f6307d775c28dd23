#include "plot/GlObjects.h"

#include "plot/GlCheck.h"

namespace orrery {

GlBuffer makeVertexBuffer(std::span<const float> data) {
    GLuint name = 0;
    glGenBuffers(1, &name);
    GlBuffer buffer(name);
    const BoundBuffer bound(buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(data.size_bytes()), data.data(), GL_STATIC_DRAW);
    if (glCheckError() != GL_NO_ERROR) {
        buffer.reset();
    }
    return buffer;
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
