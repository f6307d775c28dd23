#pragma once

#include "plot/BasicOpenGLView.h"
#include "plot/TextureString.h"
#include "plot/VertexBuffers.h"
#include "plot/data/PlotView.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace orrery {

/// Draws a plot: curves over two axes, or lit surfaces over three, from buffers that are filled once for each plot;
/// one, unless the plot is larger than a buffer may be.
///
/// Every call that changes GL objects makes this view's own context current first, so that views do not mix. What is
/// set while there is no context is kept until there is one.
class OpenGLPlotView : public BasicOpenGLView, public PlotView {
public:
    /// Both outlive the view. No buffer is larger than that many bytes.
    OpenGLPlotView(GlSurface& surface, TextRasterizer& rasterizer, std::size_t largestBytes = largestBuffer);
    ~OpenGLPlotView() override;

    [[nodiscard]] const std::vector<TextureString>& labels() const { return m_textures; }
    void setLabels(const std::vector<std::string>& labels) override;
    [[nodiscard]] const std::vector<VertexRange>& ranges() const { return m_ranges; }
    [[nodiscard]] std::uint32_t dimensions() const { return m_dimensions; }
    void setDimensions(std::uint32_t dimensions) override { m_dimensions = dimensions; }
    [[nodiscard]] const std::vector<Color>& colors() const { return m_colors; }
    void setColors(const std::vector<Color>& colors) override { m_colors = colors; }
    [[nodiscard]] float lightHeight() const override { return m_lightHeight; }
    void setLightHeight(float height) override { m_lightHeight = height; }
    [[nodiscard]] VertexMemory lendVertices(std::size_t size) override;
    void setLentSurfaces(std::uint32_t size, std::vector<VertexRange> ranges) override;
    [[nodiscard]] std::uint64_t heldFloats() const override { return m_buffers.heldFloats(); }
    void setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) override;
    [[nodiscard]] unsigned ident() const { return m_buffers.ident(); } // the first buffer of the plot's; 0: none
    /// What is to be called when a frame, or a change of the context, has given failure() a reason.
    void setFailureHandler(std::function<void()> failed) { m_failed = std::move(failed); }

    void setNeedsDisplay() override { surface().markForDisplay(); }
    [[nodiscard]] CameraRecord& camera() override { return BasicOpenGLView::camera(); }
    [[nodiscard]] float yRotation() const override { return BasicOpenGLView::yRotation(); }
    void setYRotation(float degrees) override { BasicOpenGLView::setYRotation(degrees); }
    void updateProjection() override { BasicOpenGLView::updateProjection(); }

    void updateModelView() override;
    void drawRect() override;
    void prepareOpenGL() override;
    /// Deletes the GL objects after reading the plot back from the buffers, so that the next context shows it again.
    void releaseContext() override;
    void reshape(); // the viewport alone, from the surface's bounds
    void drawObjects() override;
    void clear() {} // nothing: every pass clears for itself

private:
    void drawObjects3();
    void drawAxes3() const;
    void drawLabels3();
    void drawSurfaces3() const;
    void drawObjects2();
    void drawAxes2() const;
    void drawCurves2() const;
    void drawLabel2();
    void drawLabel(std::size_t index, float x, float y, float z);
    [[nodiscard]] bool drawable(std::size_t index) const;

    void makeTextures();
    [[nodiscard]] std::string& startPlot();
    void fail(const std::string& reason);

    TextRasterizer& m_rasterizer;
    VertexBuffers m_buffers;
    std::string m_glError;    // the first since the plot began to be set; empty: none
    std::string m_labelError; // the first of its labels
    std::function<void()> m_failed = [] {};
    std::vector<VertexRange> m_ranges;
    std::vector<Color> m_colors; // one per range
    float m_lightHeight = 2.0F;  // y of the light's direction
    std::vector<std::string> m_strings;
    std::vector<TextureString> m_textures; // one per string, x first, then z; empty until there is a context
    double m_scale = 1;                    // of the surface, to which the textures were made
    std::uint32_t m_dimensions = 0;
};

} // namespace orrery
