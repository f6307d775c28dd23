#include "plot/picture/PlotPicture.h"

#include "platform/Files.h"
#include "platform/Png.h"
#include "platform/egl/EglSurface.h"
#include "platform/qt/QtTextRasterizer.h"
#include "platform/values/OrreryError.h"
#include "plot/GlCheck.h"
#include "plot/OpenGLPlotView.h"
#include "plot/data/VertexData.h"

#include <string>

namespace orrery {

namespace {

/// Applied after the build, which may reset the camera.
void applyRequest(const PlotPictureRequest& request, PlotView& view) {
    view.camera().viewPos = request.eye.value_or(view.camera().viewPos);
    view.camera().viewDir = request.lookAt.value_or(view.camera().viewDir);
    view.setLightHeight(request.lightHeight.value_or(view.lightHeight()));
    view.setYRotation(request.yRotation);
}

} // namespace

Pixels renderPlot(const PlotPictureRequest& request, TextRasterizer& rasterizer, const PlotBuilder& build) {
    EglSurface surface(request.width, request.height, request.samples);
    if (const std::string missing = missingGlFeature(); !missing.empty()) {
        throw OrreryError(missing, {}, "Install a newer OpenGL driver.");
    }
    std::string glError;
    const GlErrorWatch watch(glError);
    OpenGLPlotView view(surface, rasterizer);
    view.prepareOpenGL();
    resetCamera(view);
    build(view);
    applyRequest(request, view);
    view.drawRect();
    Pixels pixels = surface.readPixels();
    glCheckError();
    if (!glError.empty() || !view.failure().empty()) {
        throw OrreryError(view.failure().empty() ? "OpenGL could not draw the plot: " + glError + "." : view.failure(),
                          {}, smallerPlotRemedy);
    }
    return pixels;
}

void renderPlotPng(const std::string& path, const PlotPictureRequest& request, const PlotBuilder& build) {
    const OffscreenGui gui;
    QtTextRasterizer rasterizer;
    replaceFile(path, encodePng(renderPlot(request, rasterizer, build)));
}

} // namespace orrery
