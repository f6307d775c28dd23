// How long a plot takes to reach the graphics memory and the screen, drawn off screen at 900 x 700.

#include "platform/egl/EglSurface.h"
#include "platform/qt/QtTextRasterizer.h"
#include "plot/Gl.h"
#include "plot/OpenGLPlotView.h"
#include "plot/data/PlotSession.h"
#include "plot/picture/PlotPicture.h"
#include "tests/plot/gl/scene/Scene.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

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
        resetCamera(view);
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

/// The least that draws the same picture: the same buffer with the state that the view's frame has left, turned as
/// much.
void turnBarely(benchmark::State& state) {
    const Drawing drawing(state.range(0));
    float angle = 0;
    glMatrixMode(GL_MODELVIEW);
    glBindBuffer(GL_ARRAY_BUFFER, drawing.view.ident());
    while (state.KeepRunning()) {
        glPushMatrix();
        glRotatef(angle += 0.5F, 0, 1, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glInterleavedArrays(GL_N3F_V3F, 0, nullptr);
        glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(state.range(0) * state.range(0) * 6));
        glPopMatrix();
        glFinish();
    }
    state.counters["frames/s"] = benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate);
}

/// Surfaces of which one gets another scale, built into the view's memory.
struct Rescaled {
    Rescaled(std::int64_t side, std::int64_t surfaces)
        : responses(static_cast<std::size_t>(surfaces)), maxima(responses.size(), 2.0F) {
        const auto edges = static_cast<std::int32_t>(side) + 1;
        layout = {static_cast<std::int32_t>(surfaces), edges, edges - 1, edges, edges - 1, 3, {"x", "z"}};
        rows.resize(static_cast<std::size_t>(edges) * static_cast<std::size_t>(edges));
        std::iota(rows.begin(), rows.end(), 0U);
        for (std::size_t cell = 0; cell < rows.size() * responses.size(); ++cell) {
            cells.push_back(1 + std::sin(0.001F * static_cast<float>(cell)));
        }
        for (ResponseVariable& response : responses) {
            response.setValue("includep", true);
        }
    }
    void build(PlotView& view) {
        responses[0].setValue("scale", scale = 3 - scale);
        view.setDimensions(layout.dimensions);
        makePlotForDimensions(view, layout, {cells, maxima, responses, rows}, {.built = &built});
    }

    std::vector<ResponseVariable> responses;
    std::vector<float> maxima;
    std::vector<std::uint32_t> rows;
    std::vector<float> cells;
    PlotLayout layout;
    BuiltPlot built;
    float scale = 1;
};

void rescale(benchmark::State& state) {
    Drawing drawing(1);
    Rescaled plot(state.range(0), state.range(1));
    const bool inNewMemory = state.range(2) != 0;
    if (!inNewMemory) {
        plot.build(drawing.view); // all of them; what is measured writes one again
    }
    while (state.KeepRunning()) {
        plot.build(drawing.view);
        if (inNewMemory) {
            state.PauseTiming();
            drawing.view.setSurfaces({}, 0, {});
            state.ResumeTiming();
        }
    }
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
BENCHMARK(turnBarely)
    ->Name("frame of the same buffer drawn by a bare program, cells a side")
    ->Arg(50)
    ->Arg(200)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(rescale)
    ->Name("plot built in graphics memory, one surface rescaled or all in new memory")
    ->ArgNames({"side", "surfaces", "new"})
    ->ArgsProduct({{200, 1000}, {1, 4}, {0, 1}})
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
