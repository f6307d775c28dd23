#include "plot/gl/GlFixture.h"

#include "platform/Log.h"

#include <cmath>
#include <numbers>

namespace orrery::test {

Pixels BlockRasterizer::rasterize(std::string_view, const TextAttributes& attributes, int maxWidth) {
    letters = attributes.size;
    const int made = std::min(wanted, maxWidth);
    return {made, height, std::vector<std::uint8_t>(std::size_t{4} * static_cast<std::size_t>(made) * height, 255)};
}

TestView::TestView(int width, int height, int samples, std::size_t largestBytes)
    : surface(width, height, samples), view(surface, rasterizer, largestBytes) {
    view.prepareOpenGL();
    resetCamera(view);
}

Pixels TestView::frame() {
    view.drawRect();
    return surface.readPixels();
}

Pixels TestView::frameOf(const Scene& scene) {
    scene.show(view);
    return frame();
}

GlTest::GlTest() {
    setLogSink([this](std::string_view line) { m_log.emplace_back(line); });
}

GlTest::~GlTest() {
    setLogSink({});
}

Rgb pixel(const Pixels& picture, double x, double y) {
    const auto row = static_cast<std::size_t>(picture.height - 1 - static_cast<int>(std::floor(y)));
    const std::size_t at =
        4 * (row * static_cast<std::size_t>(picture.width) + static_cast<std::size_t>(std::floor(x)));
    return {picture.rgba.at(at), picture.rgba.at(at + 1), picture.rgba.at(at + 2)};
}

WindowPoint projected(const Vector3& point, double rotationDegrees, int width, int height) {
    const double angle = rotationDegrees * std::numbers::pi / 180;
    const double x = point.x * std::cos(angle) + point.z * std::sin(angle);
    const double z = point.z * std::cos(angle) - point.x * std::sin(angle);
    // The eye at (0, 1, 4) looks along (0, -3, -14): no turn about the vertical, a tilt about x.
    const double length = std::sqrt(9.0 + 196.0);
    const double ahead = (-3 * (point.y - 1) - 14 * (z - 4)) / length;
    const double up = (14 * (point.y - 1) - 3 * (z - 4)) / length;
    const double scale =
        1 / std::tan(20 * std::numbers::pi / 180) * height / 2 / ahead; // 40 degrees from top to bottom
    return {x * scale + width / 2.0, up * scale + height / 2.0};
}

Scene plate() {
    return {.axes = {"x", "z"}, .xCount = 11, .zCount = 11, .responses = {[](auto, auto) { return 1.0F; }}};
}

Scene axesOnly() {
    return {.axes = {"x", "z"}, .xCount = 3, .zCount = 1, .responses = {[](auto, auto) { return 1.0F; }}};
}

Scene curves() {
    return {.axes = {"day"},
            .xCount = 50,
            .responses = {[](auto x, auto) { return 2 + std::sin(static_cast<float>(x) / 5); },
                          [](auto x, auto) { return static_cast<float>(x) / 20; }, [](auto, auto) { return 1.5F; }},
            .colors = {{1, 0, 0, 1}, {0, 1, 0, 1}, {1, 1, 0, 1}}};
}

} // namespace orrery::test
