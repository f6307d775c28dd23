#pragma once

#include "plot/data/PlotSession.h"
#include "plot/picture/PlotPicture.h"

#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace orrery {

/// The options of a plot's picture as they were typed, and as read from that.
struct PictureOptions {
    std::string file; // empty: no picture
    std::string size = "900x700";
    std::string eye;
    std::string lookAt;
    std::string rotation = "0";
    std::string lightHeight;
    int samples = 4;
};

/// Adds --png and the options of the view to a command.
void addPictureOptions(CLI::App& parser, PictureOptions& options);

/// @throws CLI::ValidationError naming the option that is not of its form
[[nodiscard]] PlotPictureRequest pictureRequest(const PictureOptions& options);

/// Draws the plot into the options' file. @throws OrreryError when there is nothing to draw, or as renderPlotPng
void writePicture(const std::string& file, const PlotPictureRequest& request, PlotSession& plot,
                  const RunResults& results);

} // namespace orrery
