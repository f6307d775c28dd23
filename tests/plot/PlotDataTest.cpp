#include "platform/values/OrreryError.h"
#include "plot/data/PlotLayout.h"
#include "plot/data/SurfaceStrip.h"
#include "plot/data/VertexData.h"
#include "run/IndexSet.h"
#include "run/table/ResultTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <span>
#include <utility>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float inf = std::numeric_limits<float>::infinity();

IndependentVariable axis(const char* name, std::uint32_t function, std::uint32_t count) {
    IndependentVariable variable;
    variable.setName(name);
    variable.setFunction(static_cast<PlotRole>(function));
    variable.setStridesPerCycle(count);
    return variable;
}

std::vector<ResponseVariable> responses(const std::vector<bool>& included, float scale = 1) {
    std::vector<ResponseVariable> result(included.size());
    for (std::size_t n = 0; n < included.size(); ++n) {
        result[n].setValue("includep", static_cast<bool>(included[n]));
        result[n].setValue("scale", scale);
        result[n].setValue("color", Color{static_cast<float>(n), 0, 0.5F, 1});
    }
    return result;
}

/// A block of results, all rows of it on the axes, with the maxima that the table's reader gives.
struct Results {
    Results(std::vector<float> values, const std::vector<bool>& included, float scale = 1)
        : cells(std::move(values)), variables(responses(included, scale)), maxima(variables.size(), noMaximum),
          rows(cells.size() / variables.size()) {
        for (std::size_t n = 0; n < cells.size(); ++n) {
            float& maximum = maxima[n % maxima.size()];
            maximum = cells[n] > maximum ? cells[n] : maximum;
        }
        std::iota(rows.begin(), rows.end(), 0U);
    }

    [[nodiscard]] PlotSource source() const { return {cells, maxima, variables, rows}; }
    [[nodiscard]] PlotLayout layout(const std::vector<IndependentVariable>& axes) const {
        return plotLayout(axes, variables);
    }

    std::vector<float> cells;
    std::vector<ResponseVariable> variables;
    std::vector<float> maxima;
    std::vector<std::uint32_t> rows;
};

TEST(AxisRole, IsHeldByOneVariableAtATime) {
    std::vector<IndependentVariable> variables = {axis("a", 1, 3), axis("b", 2, 3), axis("day", 1, 3)};
    RoleChange change = claimAxisRole(variables, 2);
    EXPECT_THAT(change.disabled, ElementsAre(2));
    EXPECT_THAT(change.enabled, ElementsAre(0));
    EXPECT_EQ(variables[0].function(), PlotRole::Held);
    EXPECT_EQ(variables[1].function(), PlotRole::Axis2);
    variables[2].setFunction(PlotRole::Held);
    change = claimAxisRole(variables, 2);
    EXPECT_THAT(change.disabled, IsEmpty());
    EXPECT_THAT(change.enabled, ElementsAre(2));
}

/// What the writer leaves in pieces of at most so many floats, joined: what two of them hold is asserted to be equal.
std::vector<float> writtenInPieces(decltype(write3DVertexData) write, const PlotLayout& layout, const Results& results,
                                   std::size_t most) {
    const std::uint32_t perVertex = layout.floatsPerVertex();
    std::vector<std::vector<float>> blocks;
    std::vector<VertexPiece> pieces;
    for (const VertexRun& run : cutVertices(vertexFloats(layout) / perVertex, layout.dimensions, most)) {
        EXPECT_LE(run.count * perVertex, most);
        blocks.emplace_back(run.count * perVertex, nan);
        pieces.push_back({run.first, blocks.back()});
    }
    write(layout, results.source(), pieces, {.threads = 2});
    std::vector<float> joined;
    for (const VertexPiece& piece : pieces) {
        const std::size_t at = piece.first * perVertex;
        EXPECT_TRUE(std::ranges::equal(std::span(joined).subspan(at), piece.floats.first(joined.size() - at)));
        joined.resize(at);
        joined.insert(joined.end(), piece.floats.begin(), piece.floats.end());
    }
    return joined;
}

TEST(Curves, GoOnOverTheBorderOfTwoPieces) {
    const Results results({1, 5, 2, 4, 3, 3, 4, 2, 5, 1}, {true, true});
    const PlotLayout layout = results.layout({axis("day", 1, 5)});
    const std::vector<float> whole = make2DVertexData(layout, results.source());
    for (const std::size_t most : {6U, 10U, 12U, 29U, 30U}) {
        EXPECT_EQ(writtenInPieces(write2DVertexData, layout, results, most), whole) << most;
        EXPECT_EQ(cutVertices(10, 2, most)[0].count, most / 3);
    }
    EXPECT_EQ(cutVertices(10, 2, 12), (std::vector<VertexRun>{{0, 4}, {3, 4}, {6, 4}}));
}

TEST(Curves, NeverReadPastTheRowsOrTheBlock) {
    Results results({4, 2, 4, 2}, {true});
    const PlotLayout layout = results.layout({axis("day", 1, 4)});
    results.rows = {0, 999};
    const auto vertices = make2DVertexData(layout, results.source());
    EXPECT_THAT((std::vector{vertices[1], vertices[4], vertices[7], vertices[10]}), ElementsAre(1, -1, -1, -1));
}

/// The vertices cell by cell, from the heights of the only response.
std::vector<float> plainSurface(const PlotLayout& layout, const std::vector<float>& heights) {
    const auto cells = static_cast<std::size_t>(layout.zQuads);
    std::vector<float> z;
    z.reserve(cells + 1);
    for (std::int32_t k = 0; k < layout.zEdges; ++k) {
        z.push_back(static_cast<float>(k) / (static_cast<float>(layout.zQuads) * 0.5F) - 1.0F);
    }
    std::vector<float> vertices(static_cast<std::size_t>(layout.xQuads) * cells * floatsPerCell);
    for (std::int32_t i = 0; i < layout.xQuads; ++i) {
        const auto x = [&](std::int32_t n) {
            return static_cast<float>(n) / (static_cast<float>(layout.xQuads) * 0.5F) - 1.0F;
        };
        const auto strip = static_cast<std::size_t>(i);
        const float* y = heights.data() + strip * (cells + 1);
        writeStripPlainly({x(i), x(i + 1), z.data(), y, y + cells + 1}, cells,
                          &vertices[strip * cells * floatsPerCell]);
    }
    return vertices;
}

bool sameBits(std::span<const float> left, std::span<const float> right) {
    return std::ranges::equal(std::as_bytes(left), std::as_bytes(right));
}

TEST(Surfaces, AreTheSameByEveryRoadToTheBit) {
    std::mt19937 random(3);
    for (const auto& [xEdges, zEdges] : {std::pair{7U, 5U}, {3U, 66U}, {4U, 132U}, {2U, 2U}, {500U, 501U}}) {
        std::vector<float> heights(std::size_t{xEdges} * zEdges);
        for (float& height : heights) { // rough, with flat and steep places and some that no normal can hold
            const std::array<float, 6> odd = {0, -0.0F, 1, 1e25F, 1e-25F, inf};
            height =
                random() % 8 == 0 ? odd.at(random() % (xEdges > 10 ? 3 : 6)) : static_cast<float>(random()) * 1e-9F;
        }
        Results results(heights, {true});
        results.maxima = {1};
        const PlotLayout layout = results.layout({axis("a", 1, xEdges), axis("b", 2, zEdges)});
        const std::vector<float> plain = plainSurface(layout, heights);
        for (const unsigned threads : {0U, 1U, 2U, 9U}) {
            std::vector<float> memory(plain.size() + 2, nan);
            for (const std::size_t offset : {0U, 1U}) { // the second is not aligned, and may not be streamed
                const auto vertices = std::span(memory).subspan(offset, plain.size());
                const VertexPiece whole{0, vertices};
                write3DVertexData(layout, results.source(), {&whole, 1}, {.threads = threads});
                EXPECT_TRUE(sameBits(vertices, plain)) << xEdges << " x " << zEdges << ", " << threads << " threads";
                EXPECT_TRUE(std::isnan(memory.back()));
            }
        }
        for (const std::size_t most : {40 + plain.size() / 50, 36 + plain.size() / 3}) {
            EXPECT_TRUE(sameBits(writtenInPieces(write3DVertexData, layout, results, most), plain)) << most;
        }
    }
}

struct RebuildCase {
    const char* name;
    std::function<void(Results&)> change; // of three responses on 3 x 3 points, all included, 9 the overall maximum
    std::vector<bool> kept;               // whether the surface at that place need not be written again
};

TEST(Surfaces, AreWrittenAgainOnlyWhereTheyChange) {
    const RebuildCase cases[] = {
        {"nothing", [](Results&) {}, {true, true, true}},
        {"aColor", [](Results& r) { r.variables[1].setValue("color", Color{}); }, {true, true, true}},
        {"aScale", [](Results& r) { r.variables[1].setValue("scale", 2.0F); }, {true, false, true}},
        {"theLastExcluded", [](Results& r) { r.variables[2].setValue("includep", false); }, {true, true}},
        {"theFirstExcluded", [](Results& r) { r.variables[0].setValue("includep", false); }, {false, false}},
        {"theMaximum", [](Results& r) { r.maxima[2] = 10; }, {false, false, false}},
        {"theRows", [](Results& r) { std::swap(r.rows[0], r.rows[8]); }, {false, false, false}},
    };
    for (const RebuildCase& row : cases) {
        SCOPED_TRACE(row.name);
        std::vector<float> heights(27, 1);
        heights[4] = 9;
        Results results(heights, {true, true, true});
        const std::vector<IndependentVariable> axes = {axis("a", 1, 3), axis("b", 2, 3)};
        std::vector<float> memory(vertexFloats(results.layout(axes)));
        BuiltPlot built;
        const VertexPiece before{0, memory};
        write3DVertexData(results.layout(axes), results.source(), {&before, 1}, {.built = &built});
        row.change(results);
        std::ranges::fill(memory, nan);
        const PlotLayout layout = results.layout(axes);
        for (int round = 0; round < 2; ++round) { // the second time all is there
            const auto vertices = std::span(memory).first(vertexFloats(layout));
            const VertexPiece now{0, vertices};
            write3DVertexData(layout, results.source(), {&now, 1}, {.built = &built});
            const std::vector<float> all = make3DVertexData(layout, results.source());
            for (std::size_t s = 0; s < row.kept.size(); ++s) {
                const std::size_t floats = vertices.size() / row.kept.size();
                const auto written = vertices.subspan(s * floats, floats);
                EXPECT_TRUE(row.kept[s] ? std::ranges::all_of(written, [](float v) { return std::isnan(v); })
                                        : sameBits(written, std::span(all).subspan(s * floats, floats)))
                    << s;
            }
        }
    }
}

TEST(Plots, AreGivenUpWhenTheProgressSaysSo) {
    const Results results(std::vector<float>(600'000, 1), {true, true});
    const PlotLayout layouts[] = {results.layout({axis("day", 1, 300'000)}),
                                  results.layout({axis("a", 1, 600), axis("b", 2, 500)})};
    for (const PlotLayout& layout : layouts) {
        SCOPED_TRACE(layout.dimensions);
        const auto write = layout.dimensions == 2 ? write2DVertexData : write3DVertexData;
        std::vector<float> memory(vertexFloats(layout));
        const VertexPiece whole{0, memory};
        BuiltPlot built;
        std::vector<double> parts;
        BuildOptions options{.threads = 2, .built = &built, .progress = [&](double part) {
                                 parts.push_back(part);
                                 return true;
                             }};
        write(layout, results.source(), {&whole, 1}, options);
        EXPECT_GT(parts.size(), 2U);
        EXPECT_TRUE(std::ranges::is_sorted(parts));
        EXPECT_THAT(parts, testing::Each(testing::AllOf(testing::Ge(0), testing::Lt(1))));
        built.surfaces.clear();
        int calls = 0;
        options.progress = [&](double) { return ++calls < 2; };
        EXPECT_THROW(write(layout, results.source(), {&whole, 1}, options), BuildCancelled);
        EXPECT_FALSE(built.isOf(layout, results.rows));
    }
}

TEST(Surfaces, HaveFiniteNormalsWhateverTheHeights) {
    const Results results({1e30F, 1, nan, 4, inf, 6, 0, -1e30F, 9}, {true}, 1e20F);
    const auto vertices = make3DVertexData(results.layout({axis("a", 1, 3), axis("b", 2, 3)}), results.source());
    for (std::size_t n = 0; n < vertices.size(); n += 6) {
        EXPECT_NEAR(std::hypot(vertices[n], vertices[n + 1], vertices[n + 2]), 1, 1e-6) << "vertex " << n / 6;
    }
}

TEST(PlotData, IsRefusedWhenTheLayoutCountsOtherSurfaces) {
    const Results results({1, 2, 3, 4}, {true});
    PlotLayout layout = results.layout({axis("a", 1, 2), axis("b", 2, 2)});
    layout.nSurfaces = 2;
    EXPECT_THROW((void)make3DVertexData(layout, results.source()), AssertionFailure);
}

TEST(PlotData, IsRefusedWithBothFiguresWhereItDoesNotFit) {
    PlotLayout layout{.nSurfaces = 100, .xQuads = 7'000'000, .zQuads = 1, .dimensions = 3, .labels = {}};
    const std::string message = "The plot, 100 responses of 42000000 vertices each, would need 100 GB of memory, but ";
    const auto refusal = [&layout](std::uint64_t held) {
        try {
            return std::to_string(vertexFloats(layout, held));
        } catch (const OrreryError& error) {
            return error.problem();
        }
    };
    EXPECT_EQ(refusal(0), message + "no plot can have more than 17 GB.");
    layout.xQuads = layout.zQuads = std::numeric_limits<std::int32_t>::max();
    EXPECT_THAT(refusal(0), testing::HasSubstr("no plot can have more than 17 GB."));
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit small = {pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (64U << 20U), limit.rlim_max};
    layout = {.nSurfaces = 1, .xQuads = 8'000'000, .zQuads = 1, .dimensions = 3, .labels = {}};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &small), 0);
    const std::string refused = refusal(0);
    const std::string held = refusal(288'000'000);
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    EXPECT_THAT(refused, testing::MatchesRegex("The plot, 1 response of 48000000 vertices each, would need 1.1 GB of "
                                               "memory, but only [0-9.]+ MB are free."));
    EXPECT_EQ(held, "288000000") << "the memory of the plot before serves this one";
}

struct MaximumCase {
    const char* name;
    std::vector<float> cells; // two columns
    std::vector<bool> included;
    float maximum;
};

TEST(OverallMaximum, IsPositiveAndFinite) {
    const MaximumCase cases[] = {{"ofIncludedOnly", {1, 9, 3, 2}, {true, false}, 3},
                                 {"overAllIncluded", {1, 9, 3, 2}, {true, true}, 9},
                                 {"negativeBecomesAbsolute", {-1, -9, -3, 0}, {true, true}, 9},
                                 {"allZeroBecomesOne", {0, 7, 0, 7}, {true, false}, 1},
                                 {"infinityTakesNoPart", {inf, 2, 5, nan}, {true, true}, 5},
                                 {"nothingFinite", {inf, nan, -inf, nan}, {true, true}, 1},
                                 {"farBelow", {-4e9F, 0, -inf, 0}, {true, false}, 4e9F}};
    for (const MaximumCase& row : cases) {
        EXPECT_EQ(overallMaximum(Results(row.cells, row.included).source()), row.maximum) << row.name;
    }
}

} // namespace
} // namespace orrery
