#pragma once

#include "platform/GlSurface.h"
#include "plot/data/Camera.h"

#include <array>

namespace orrery {

/// The base of a view that draws with OpenGL: the camera, the rotation of the scene about the vertical, the perspective
/// projection, and the sequence of one frame, into which a subclass plugs its model-view transform and its drawing.
///
/// Main thread. The surface outlives the view. While the surface has no context, nothing is drawn and what needs the
/// context is made up for at the first frame.
class BasicOpenGLView : public GlSurfaceClient {
public:
    explicit BasicOpenGLView(GlSurface& surface) : m_surface(surface) {}
    BasicOpenGLView(const BasicOpenGLView&) = delete;
    BasicOpenGLView& operator=(const BasicOpenGLView&) = delete;

    /// What a surface for this view has to offer.
    [[nodiscard]] static constexpr GlPixelFormat basicPixelFormat() { return {}; }

    [[nodiscard]] virtual CameraRecord& camera() { return m_camera; }
    [[nodiscard]] static const Vector3& origin();
    [[nodiscard]] float shapeSize() const { return m_shapeSize; }
    void setShapeSize(float size) { m_shapeSize = size; }
    /// The perspective projection for the camera and the size last applied; skipped while the height is 0.
    virtual void updateProjection();
    [[nodiscard]] virtual float yRotation() const { return m_worldRotation[0]; } // degrees
    virtual void setYRotation(float degrees) { m_worldRotation = {degrees, 0, 1, 0}; }

    /// Follows the surface's size: viewport and projection, when it has changed.
    void resizeGL();
    virtual void drawObjects() {}
    virtual void updateModelView() {}
    /// One frame, from following the size to showing the buffer. Nothing without a context.
    void drawRect() override;
    void prepareOpenGL() override;

protected:
    [[nodiscard]] GlSurface& surface() { return m_surface; }
    [[nodiscard]] const std::array<float, 4>& worldRotation() const { return m_worldRotation; }
    [[nodiscard]] const std::array<float, 4>& objectRotation() const { return m_objectRotation; }

private:
    GlSurface& m_surface;
    CameraRecord m_camera;
    std::array<float, 4> m_worldRotation{};  // degrees, then the axis
    std::array<float, 4> m_objectRotation{}; // likewise, applied after it; nothing sets it yet
    float m_shapeSize = 0;
};

} // namespace orrery
