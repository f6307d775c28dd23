#include "batch/PlotPicture.h"

#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace orrery {
namespace {

CLI::ValidationError wrong(const std::string& option, const std::string& text, const std::string& form) {
    return CLI::ValidationError(option, quoted(text) + " is not of the form " + form + ".");
}

/// Numbers with commas between them; every one finite.
template <std::size_t Count>
std::array<float, Count> numbers(std::string_view text, const std::string& option, const std::string& form) {
    std::array<float, Count> values{};
    std::string_view rest = text;
    for (std::size_t i = 0; i < Count; ++i) {
        const ScannedFloat scanned = scanFloat(rest);
        rest.remove_prefix(scanned.length);
        const bool last = i + 1 == Count;
        if (scanned.length == 0 || !std::isfinite(scanned.value) || (last ? !rest.empty() : !rest.starts_with(','))) {
            throw wrong(option, std::string(text), form);
        }
        rest.remove_prefix(last ? 0 : 1);
        values.at(i) = scanned.value;
    }
    return values;
}

float number(const std::string& text, const std::string& option) {
    return numbers<1>(text, option, "NUMBER")[0];
}

Vector3 point(const std::string& text, const std::string& option) {
    const auto [x, y, z] = numbers<3>(text, option, "X,Y,Z");
    return {static_cast<double>(x), static_cast<double>(y), static_cast<double>(z)};
}

/// As the option takes it.
std::string pointText(const Vector3& point) {
    return fmt::format("{},{},{}", point.x, point.y, point.z);
}

void readSize(const std::string& text, PlotPictureRequest& request) {
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, request.width);
    if (width.ec == std::errc() && width.ptr != end && *width.ptr == 'x') {
        const auto height = std::from_chars(width.ptr + 1, end, request.height);
        if (height.ec == std::errc() && height.ptr == end) {
            return;
        }
    }
    throw wrong("--size", text, "WIDTHxHEIGHT");
}

} // namespace

void addPictureOptions(CLI::App& parser, PictureOptions& options) {
    parser.add_option("--png", options.file, "File for a picture of the plot");
    parser.add_option("--size", options.size, "WIDTHxHEIGHT of the picture in pixels")->capture_default_str();
    parser.add_option("--rotate", options.rotation, "Degrees about the vertical axis")->capture_default_str();
    parser.add_option("--eye", options.eye, fmt::format("X,Y,Z of the eye (default: {})", pointText(defaultViewPos)));
    parser.add_option("--look", options.lookAt,
                      fmt::format("X,Y,Z of the point looked at (default: {})", pointText(defaultViewDir)));
    parser.add_option("--light", options.lightHeight,
                      fmt::format("Height of the light (default: {})", defaultLightHeight));
    parser.add_option("--samples", options.samples, "Samples per pixel; 1 leaves edges jagged")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
}

PlotPictureRequest pictureRequest(const PictureOptions& options) {
    PlotPictureRequest request;
    readSize(options.size, request);
    request.samples = options.samples;
    request.yRotation = number(options.rotation, "--rotate");
    if (!options.eye.empty()) {
        request.eye = point(options.eye, "--eye");
    }
    if (!options.lookAt.empty()) {
        request.lookAt = point(options.lookAt, "--look");
    }
    if (!options.lightHeight.empty()) {
        request.lightHeight = number(options.lightHeight, "--light");
    }
    return request;
}

void writePicture(const std::string& file, const PlotPictureRequest& request, PlotSession& plot,
                  const RunResults& results) {
    if (!plot.layout().isDrawn()) {
        throw OrreryError("The plot has nothing to draw.", {.file = file},
                          "Choose an axis with --axis1 and a response with --include.");
    }
    renderPlotPng(file, request, [&](PlotView& view) { plot.show(view, results); });
}

} // namespace orrery
