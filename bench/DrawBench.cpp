// How long a plot takes to reach the graphics memory and the screen, drawn off screen at 900 x 700.

#include "platform/egl/EglSurface.h"
#include "platform/qt/QtTextRasterizer.h"
#include "plot/Gl.h"
#include "plot/OpenGLPlotView.h"
#include "plot/picture/PlotPicture.h"
#include "tests/plot/gl/scene/Scene.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>

namespace orrery {
namespace {

constexpr int width = 900;
constexpr int height = 700;

test::Scene rippled(std::int64_t cells) {
    const auto edges = static_cast<std::uint32_t>(cells) + 1;
    return {.axes = {"/Farm/Management/irrigation", "day"},
            .xCount = edges,
            .zCount = edges,
            .responses = {[](auto x, auto z) {
                return 1.0F + std::sin(0.02F * static_cast<float>(x)) * std::cos(0.03F * static_cast<float>(z));
            }}};
}

/// A view on a surface of its own, and the scene that it can be given.
struct Drawing {
    explicit Drawing(std::int64_t cells, int samples = 1) : surface(width, height, samples), view(surface, rasterizer) {
        view.prepareOpenGL();
        view.camera().viewPos = {0, 1, 4};
        view.camera().viewDir = {0, -2, -10};
        view.camera().viewUp = {0, 1, 0};
        rippled(cells).show(view);
        view.drawRect();
        glFinish();
    }

    OffscreenGui gui;
    QtTextRasterizer rasterizer;
    EglSurface surface;
    OpenGLPlotView view;
};

/// Turns the surface by the animation's step, frame after frame; the counter is frames a second.
void turn(benchmark::State& state) {
    Drawing drawing(state.range(0), static_cast<int>(state.range(1)));
    while (state.KeepRunning()) {
        drawing.view.setYRotation(drawing.view.yRotation() + 0.5F);
        drawing.view.drawRect();
        glFinish();
    }
    state.counters["frames/s"] = benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate);
}

/// The vertices of one surface into a new buffer of the driver's.
void upload(benchmark::State& state) {
    Drawing drawing(1);
    const auto count = static_cast<std::uint32_t>(state.range(0) * state.range(0) * 36);
    const std::vector<float> vertices(count, 0.5F);
    while (state.KeepRunning()) {
        drawing.view.setSurfaces(vertices, count, {{0, count / 6}});
        glFinish();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * count * 4);
}

/// From the table's values to the finished pixels, with a new context.
void firstPicture(benchmark::State& state) {
    const OffscreenGui gui;
    QtTextRasterizer rasterizer;
    const test::Scene scene = rippled(state.range(0));
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(
            renderPlot({.width = width, .height = height}, rasterizer, [&](PlotView& view) { scene.show(view); }));
    }
}

// Wall time: the driver draws with threads of its own.
BENCHMARK(turn)
    ->Name("frame of a turning surface, cells a side, samples a pixel")
    ->ArgsProduct({{50, 200, 1000}, {1, 4}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(upload)
    ->Name("upload of a surface, cells a side")
    ->Arg(200)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(firstPicture)
    ->Name("first picture after the table is read, cells a side")
    ->Arg(200)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
} // namespace orrery
