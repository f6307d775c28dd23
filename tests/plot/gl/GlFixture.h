#pragma once

#include "platform/TextRasterizer.h"
#include "platform/egl/EglSurface.h"
#include "plot/OpenGLPlotView.h"
#include "tests/plot/gl/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orrery::test {

/// Sets every text as a full white block of known size, so that a label's place can be measured whatever the fonts.
/// Keeps the size of the letters that it was asked for.
class BlockRasterizer : public TextRasterizer {
public:
    static constexpr int width = 40;
    static constexpr int height = 12;
    [[nodiscard]] Pixels rasterize(std::string_view text, const TextAttributes& attributes, int maxWidth) override;
    int wanted = width; // as far as there is room
    double letters = 0;
};

/// A surface that can be on a dense screen.
struct TestSurface : EglSurface {
    using EglSurface::EglSurface;
    [[nodiscard]] double scale() const override { return density; }
    double density = 1;
};

/// A view on a surface of its own with a new window's camera.
struct TestView {
    explicit TestView(int width = 300, int height = 240, int samples = 1, std::size_t largestBytes = largestBuffer);
    [[nodiscard]] Pixels frame(); // draws one and reads it
    [[nodiscard]] Pixels frameOf(const Scene& scene);

    TestSurface surface;
    BlockRasterizer rasterizer;
    OpenGLPlotView view;
};

/// Every test of drawing: fails when an OpenGL error was logged.
class GlTest : public ::testing::Test {
public:
    GlTest();
    ~GlTest() override;

protected:
    void TearDown() override { EXPECT_TRUE(m_log.empty()) << m_log.front(); }
    std::vector<std::string> m_log;
};

using Rgb = std::array<int, 3>;
[[nodiscard]] Rgb pixel(const Pixels& picture, double x, double y); // from the lower left, as OpenGL counts

/// A rectangle of pixels, from the lower left, both ends within it.
struct Region {
    int left = 0;
    int bottom = 0;
    int right = 0;
    int top = 0;

    void include(int x, int y) {
        *this = {std::min(left, x), std::min(bottom, y), std::max(right, x), std::max(top, y)};
    }
};
/// The least region that holds every pixel for which `wanted` says so; none when there is no such pixel.
template <typename Wanted>
[[nodiscard]] std::optional<Region> regionWhere(const Pixels& picture, const Wanted& wanted) {
    std::optional<Region> found;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            if (!wanted(x, y)) continue;
            (found ? *found : found.emplace(Region{x, y, x, y})).include(x, y);
        }
    }
    return found;
}

/// Where the camera of a new window shows a point of the scene that is turned by so many degrees, in pixels from the
/// lower left; worked out here without OpenGL.
struct WindowPoint {
    double x = 0;
    double y = 0;
};
[[nodiscard]] WindowPoint projected(const Vector3& point, double rotationDegrees, int width, int height);

/// A level plate of height 1 on 10 × 10 cells.
[[nodiscard]] Scene plate();
/// Axes and labels without a surface: the second axis has one value, so there is no cell.
[[nodiscard]] Scene axesOnly();
/// Three curves of 50 points.
[[nodiscard]] Scene curves();

} // namespace orrery::test
