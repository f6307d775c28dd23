#pragma once

#include "platform/TextRasterizer.h"
#include "platform/values/Pixels.h"
#include "plot/data/PlotView.h"

#include <functional>
#include <optional>
#include <string>

namespace orrery {

/// How a plot is to be seen. What is not given is as in a window that has just been opened.
struct PlotPictureRequest {
    int width = 900; // pixels
    int height = 700;
    int samples = 1;     // per pixel; more smooth the edges of surfaces
    float yRotation = 0; // degrees
    std::optional<Vector3> eye = {};
    std::optional<Vector3> lookAt = {};
    std::optional<float> lightHeight = {};
};

/// Gives a plot to a view: dimensions, labels, surfaces and colours.
using PlotBuilder = std::function<void(PlotView&)>;

/// Draws the plot as a window would, without one.
/// @throws OrreryError when there is no OpenGL for it, or the size is nothing or too large
[[nodiscard]] Pixels renderPlot(const PlotPictureRequest& request, TextRasterizer& rasterizer,
                                const PlotBuilder& build);

/// Draws the plot into a PNG file, which is replaced whole. @throws OrreryError as above, or that the file is unchanged
void renderPlotPng(const std::string& path, const PlotPictureRequest& request, const PlotBuilder& build);

} // namespace orrery
