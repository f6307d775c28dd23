#pragma once

#include "plot/BasicOpenGLView.h"
#include "plot/TextureString.h"
#include "plot/data/PlotView.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orrery {

/// Draws a plot: curves over two axes, or lit surfaces over three, from one buffer that is filled once for each plot.
///
/// Every call that changes GL objects makes this view's own context current first, so that views do not mix. What is
/// set while there is no context is kept until there is one.
class OpenGLPlotView : public BasicOpenGLView, public PlotView {
public:
    /// Both outlive the view.
    OpenGLPlotView(GlSurface& surface, TextRasterizer& rasterizer);
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
    /// As PlotView says: the memory of the buffer, which is the one of the plot before where it is large enough and not
    /// much larger; without a context, or where GL maps none, a block that is used again and again.
    [[nodiscard]] VertexMemory lendVertices(std::size_t size) override;
    /// As PlotView says. When the driver cannot hold the data, that is logged and the plot is empty.
    void setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) override;
    [[nodiscard]] unsigned ident() const { return m_ident.get(); } // the buffer that holds the plot; 0: none

    void setNeedsDisplay() override { surface().markForDisplay(); }
    [[nodiscard]] CameraRecord& camera() override { return BasicOpenGLView::camera(); }
    [[nodiscard]] float yRotation() const override { return BasicOpenGLView::yRotation(); }
    void setYRotation(float degrees) override { BasicOpenGLView::setYRotation(degrees); }
    void updateProjection() override { BasicOpenGLView::updateProjection(); }

    void updateModelView() override;
    void prepareOpenGL() override;
    /// Deletes the GL objects after reading the plot back from the buffer, so that the next context shows it again.
    void releaseContext() override;
    void reshape(); // the viewport alone, from the surface's bounds
    void drawObjects() override;
    void clear() {} // nothing: every pass clears for itself

private:
    void drawObjects3();
    void drawAxes3() const;
    void drawLabels3() const;
    void drawSurfaces3() const;
    void drawObjects2();
    void drawAxes2() const;
    void drawCurves2() const;
    void drawLabel2() const;
    void drawLabel(std::size_t index, float x, float y, float z) const;
    [[nodiscard]] bool drawable(std::size_t index) const;

    void makeTextures();
    void fillBuffer(std::span<const float> data);
    void readBack();
    void dropBuffer();
    [[nodiscard]] std::span<float> mapBufferFor(std::size_t size);
    [[nodiscard]] bool takeLent(std::span<const float> data);

    TextRasterizer& m_rasterizer;
    GlBuffer m_ident;
    std::size_t m_bufferFloats = 0;   // floats in the buffer that are the plot's
    std::size_t m_bufferCapacity = 0; // floats that it has room for
    const float* m_mapped = nullptr;  // the buffer's memory while it is lent
    bool m_keepsLent = false; // buffer or m_pending, whichever is there, holds what was written when it was lent
    std::vector<VertexRange> m_ranges;
    std::vector<Color> m_colors; // one per range
    float m_lightHeight = 2.0F;  // y of the light's direction
    std::vector<std::string> m_strings;
    std::vector<TextureString> m_textures; // one per string, x first, then z; empty until there is a context
    double m_scale = 1;                    // of the surface, to which the textures were made
    std::uint32_t m_dimensions = 0;
    std::vector<float> m_pending; // data for the next context, and the block that is lent where no buffer is mapped
};

} // namespace orrery
