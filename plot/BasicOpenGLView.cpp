#include "plot/BasicOpenGLView.h"

#include "plot/Gl.h"
#include "plot/GlCheck.h"

#include <cstdint>

namespace orrery {

namespace {

constexpr double fieldOfView = 40.0; // degrees, vertical

} // namespace

const Vector3& BasicOpenGLView::origin() {
    static constexpr Vector3 point;
    return point;
}

void BasicOpenGLView::updateProjection() {
    if (m_camera.viewHeight == 0 || !m_surface.makeCurrent()) {
        return;
    } // the next resizeGL() makes up for it
    const DepthRange depth = depthRange(m_shapeSize, m_camera.viewPos.z);
    const float aspect = static_cast<float>(m_camera.viewWidth) / static_cast<float>(m_camera.viewHeight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(fieldOfView, static_cast<double>(aspect), depth.near, depth.far);
    glCheckError();
}

void BasicOpenGLView::resizeGL() {
    const SurfaceBounds bounds = m_surface.bounds();
    if (bounds.height == m_camera.viewHeight && bounds.width == m_camera.viewWidth) {
        return;
    }
    m_camera.viewWidth = static_cast<std::int32_t>(bounds.width);
    m_camera.viewHeight = static_cast<std::int32_t>(bounds.height);
    glViewport(0, 0, m_camera.viewWidth, m_camera.viewHeight);
    glCheckError();
    updateProjection();
}

void BasicOpenGLView::drawRect() {
    if (!m_surface.makeCurrent()) {
        return;
    }
    resizeGL();
    glCheckError();
    updateModelView();
    glCheckError();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    drawObjects();
    glCheckError();
    m_surface.flushBuffer();
    glCheckError();
}

void BasicOpenGLView::prepareOpenGL() {
    m_surface.setSwapInterval(1);
    glEnable(GL_BLEND);
    // Colours blend by alpha; the target's own alpha stays 1, or a compositor would let the desktop shine through.
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    glShadeModel(GL_FLAT);
    glPolygonOffset(1.0F, 1.0F);
    glClearColor(0, 0, 0, 1);
    m_shapeSize = 5.0F;
    m_camera.viewWidth = 0; // a new context has neither viewport nor projection
    m_camera.viewHeight = 0;
}

} // namespace orrery
