#pragma once

#include "plot/data/Camera.h"
#include "plot/data/VertexPieces.h"
#include "run/ResponseVariable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace orrery {

/// The vertices of one curve or surface within the plot's array, counted in vertices.
struct VertexRange {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    friend bool operator==(const VertexRange&, const VertexRange&) = default;
};

/// Memory of a view for the vertices of its next plot, in pieces that follow one another.
struct VertexMemory {
    std::vector<VertexPiece> pieces;
    bool kept = false; // it holds what was written there when it was lent before
};

/// What the document says to the drawing of its plot. Implemented by the GL view, and by a store without a window.
class PlotView {
public:
    virtual ~PlotView() = default;

    virtual void setDimensions(std::uint32_t dimensions) = 0; // 2 or 3
    virtual void setLabels(const std::vector<std::string>& labels) = 0;
    /// Lends memory for that many floats of a plot of the dimensions last given, to be filled and shown by
    /// setLentSurfaces. The plot so far is gone, and the view shows none until then.
    /// @throws std::bad_alloc, and OrreryError with what is needed and what there is
    [[nodiscard]] virtual VertexMemory lendVertices(std::size_t size) = 0;
    /// Shows what was written into the memory that was lent last, for a plot of that many floats.
    virtual void setLentSurfaces(std::uint32_t size, std::vector<VertexRange> ranges) = 0;
    /// Floats that the view has memory for, which the next plot is built in or that is given back for it.
    [[nodiscard]] virtual std::uint64_t heldFloats() const = 0;
    /// Replaces the plot's data by a copy (in a GPU buffer); all three empty clear the plot.
    /// Layout of `data`: 2-D x, y, z per vertex; 3-D normal x, y, z, then position x, y, z. @throws as lendVertices
    virtual void setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) = 0;
    virtual void setColors(const std::vector<Color>& colors) = 0;
    virtual void setNeedsDisplay() = 0;

    [[nodiscard]] virtual CameraRecord& camera() = 0;
    [[nodiscard]] virtual float yRotation() const = 0;
    virtual void setYRotation(float degrees) = 0;
    [[nodiscard]] virtual float lightHeight() const = 0;
    virtual void setLightHeight(float height) = 0;
    virtual void updateProjection() = 0;

    /// Why the view does not show the plot that was asked for, in words for the user; empty when it does. The next
    /// plot's memory empties it.
    [[nodiscard]] const std::string& failure() const { return m_failure; }
    void setFailure(std::string reason) { m_failure = std::move(reason); }

private:
    std::string m_failure;
};

/// Sets one coordinate of the eye or of the point looked at, such as (viewPos, x).
void setCoordinate(PlotView& view, Vector3 CameraRecord::*vector, double Vector3::*axis, float value);

/// Puts camera and light back to their defaults; the rotation stays.
void resetCamera(PlotView& view);

/// Leaves the view without a plot.
void clearPlot(PlotView& view);

/// A plot view without a surface: keeps what it is given. Camera, light and rotation work as in any view.
class StoredPlotView : public PlotView {
public:
    void setDimensions(std::uint32_t dimensions) override { m_dimensions = dimensions; }
    void setLabels(const std::vector<std::string>& labels) override { m_labels = labels; }
    [[nodiscard]] VertexMemory lendVertices(std::size_t size) override;
    void setLentSurfaces(std::uint32_t size, std::vector<VertexRange> ranges) override;
    [[nodiscard]] std::uint64_t heldFloats() const override { return m_vertices.capacity(); }
    void setSurfaces(std::span<const float> data, std::uint32_t size, std::vector<VertexRange> ranges) override;
    void setColors(const std::vector<Color>& colors) override { m_colors = colors; }
    void setNeedsDisplay() override { ++m_displayRequests; }

    [[nodiscard]] CameraRecord& camera() override { return m_camera; }
    [[nodiscard]] float yRotation() const override { return m_yRotation; }
    void setYRotation(float degrees) override { m_yRotation = degrees; }
    [[nodiscard]] float lightHeight() const override { return m_lightHeight; }
    void setLightHeight(float height) override { m_lightHeight = height; }
    void updateProjection() override { ++m_projectionUpdates; }

    [[nodiscard]] std::uint32_t dimensions() const { return m_dimensions; }
    [[nodiscard]] const std::vector<std::string>& labels() const { return m_labels; }
    [[nodiscard]] const std::vector<float>& vertices() const { return m_vertices; }
    [[nodiscard]] const std::vector<VertexRange>& ranges() const { return m_ranges; }
    [[nodiscard]] const std::vector<Color>& colors() const { return m_colors; }
    [[nodiscard]] unsigned displayRequests() const { return m_displayRequests; }
    [[nodiscard]] unsigned projectionUpdates() const { return m_projectionUpdates; }

private:
    std::uint32_t m_dimensions = 0;
    std::vector<std::string> m_labels;
    std::vector<float> m_vertices;
    bool m_lentBefore = false;
    std::vector<VertexRange> m_ranges;
    std::vector<Color> m_colors;
    CameraRecord m_camera;
    float m_yRotation = 0;
    float m_lightHeight = 0;
    unsigned m_displayRequests = 0;
    unsigned m_projectionUpdates = 0;
};

} // namespace orrery
