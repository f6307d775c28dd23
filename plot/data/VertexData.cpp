#include "plot/data/VertexData.h"

#include "platform/Files.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"
#include "plot/data/SurfaceBuild.h"
#include "run/table/ResultTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

namespace orrery {

namespace {

/// Writes the points `first` … `last` − 1 of a curve from `out` on.
void writePoints(Heights heights, std::size_t first, std::size_t last, float half, float* out) {
    for (std::size_t i = first; i < last; ++i) {
        *out++ = axisPosition(i, half);
        *out++ = heights.at(i) - 1.0F;
        *out++ = 0.0F;
    }
}

/// The same into the pieces that hold them.
void writePoints(const SurfaceJob& job, std::size_t first, std::size_t last, float half,
                 std::span<const VertexPiece> pieces) {
    forEachPart(pieces, {job.firstVertex + first, last - first}, floatsPerVertexOf(2),
                [&](std::size_t offset, std::size_t count, float* out) {
                    writePoints(job.heights, first + offset, first + offset + count, half, out);
                });
}

/// Writes the curves; false where `progress` has stopped that.
bool writeCurves(const PlotLayout& layout, std::span<const SurfaceJob> jobs, std::span<const VertexPiece> pieces,
                 const std::function<bool(double)>& progress) {
    constexpr std::size_t reportedPoints = 250'000; // between two calls of the progress
    const auto points = static_cast<std::size_t>(layout.xEdges);
    const auto half = static_cast<float>(static_cast<double>(layout.xEdges) * 0.5);
    const auto all = static_cast<double>(points * jobs.size());
    for (std::size_t s = 0; s < jobs.size(); ++s) {
        for (std::size_t first = 0; first < points; first += reportedPoints) {
            if (progress && !progress(static_cast<double>(s * points + first) / all)) {
                return false;
            }
            writePoints(jobs[s], first, std::min(first + reportedPoints, points), half, pieces);
        }
    }
    return true;
}

/// Calls write(column) for every included response variable.
template <typename Write>
void forEachIncluded(std::span<const ResponseVariable> responses, Write write) {
    for (std::size_t column = 0; column < responses.size(); ++column) {
        if (responses[column].includep()) {
            write(column);
        }
    }
}

/// Greatest finite value of the column, or of its absolute values; `least` when there is none above it.
float greatestFinite(const PlotSource& source, std::size_t column, bool absolute, float least) {
    if (!source.ranges.empty()) {
        const ColumnRange& range = source.ranges[column];
        if (range.least > range.greatest) return least;
        return std::max(least, absolute ? std::max(std::fabs(range.least), std::fabs(range.greatest)) : range.greatest);
    }
    for (std::size_t cell = column; cell < source.cells.size(); cell += source.responses.size()) {
        const float value = absolute ? std::fabs(source.cells[cell]) : source.cells[cell];
        least = std::isfinite(value) && value > least ? value : least;
    }
    return least;
}

void requireFloatCount(const PlotLayout& layout, const PlotSource& source, std::span<const VertexPiece> pieces) {
    const auto included = std::ranges::count_if(source.responses, &ResponseVariable::includep);
    const std::uint64_t floats =
        pieces.empty() ? 0 : pieces.back().first * layout.floatsPerVertex() + pieces.back().floats.size();
    if (included != layout.nSurfaces ||
        floats != static_cast<std::uint64_t>(included) * layout.verticesPerSurface() * layout.floatsPerVertex()) {
        throw AssertionFailure("Inconsistent float count");
    }
}

/// The included responses, each with the factor from its value to a height, which stands for `perMaximum` at most.
std::vector<BuiltPlot::Surface> surfacesOf(const PlotSource& source, double perMaximum) {
    const double perUnit = perMaximum / static_cast<double>(overallMaximum(source));
    std::vector<BuiltPlot::Surface> surfaces;
    forEachIncluded(source.responses, [&](std::size_t column) {
        const auto scale = static_cast<double>(source.responses[column].scale());
        surfaces.push_back({column, static_cast<float>(scale * perUnit)});
    });
    return surfaces;
}

/// The surfaces that have to be written, with their places in the plot: all, or those that are not there yet.
std::vector<SurfaceJob> jobsFor(const PlotLayout& layout, const PlotSource& source,
                                std::span<const BuiltPlot::Surface> surfaces, const BuiltPlot* built) {
    const bool sameGrid = built != nullptr && built->isOf(layout, source.rows);
    std::vector<SurfaceJob> jobs;
    for (std::size_t s = 0; s < surfaces.size(); ++s) {
        if (!sameGrid || s >= built->surfaces.size() || built->surfaces[s] != surfaces[s]) {
            jobs.push_back(
                {{source.cells, source.responses.size(), surfaces[s].column, source.rows, surfaces[s].factor},
                 s * layout.verticesPerSurface()});
        }
    }
    return jobs;
}

/// Writes what has to be written by write(jobs), and keeps in `options.built` what the memory holds then. Where that
/// says false the build has been cancelled.
template <typename Write>
void writePlot(const PlotLayout& layout, const PlotSource& source, double perMaximum,
               std::span<const VertexPiece> pieces, const BuildOptions& options, Write write) {
    requireFloatCount(layout, source, pieces);
    if (pieces.empty() || pieces.front().floats.empty()) {
        return;
    }
    std::vector<BuiltPlot::Surface> surfaces = surfacesOf(source, perMaximum);
    const std::vector<SurfaceJob> jobs = jobsFor(layout, source, surfaces, options.built);
    BuiltPlot before = options.built != nullptr ? std::exchange(*options.built, {}) : BuiltPlot();
    if (!write(jobs)) {
        throw BuildCancelled();
    }
    if (options.built != nullptr) {
        before.set(layout, source.rows, std::move(surfaces));
        *options.built = std::move(before);
    }
}

[[noreturn]] void refuse(const PlotLayout& layout, std::uint64_t bytes, const std::string& limit) {
    throw OrreryError(fmt::format("The plot, {} {} of {} vertices each, would need {} of memory, but {}.",
                                  layout.nSurfaces, layout.nSurfaces == 1 ? "response" : "responses",
                                  layout.verticesPerSurface(), sizeText(bytes), limit),
                      {}, smallerPlotRemedy);
}

/// Of two counts; the largest number where it is larger.
std::uint64_t product(std::uint64_t one, std::uint64_t other) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    return other == 0 || one <= largest / other ? one * other : largest;
}

std::vector<float> writtenBy(decltype(write3DVertexData) write, const PlotLayout& layout, const PlotSource& source) {
    std::vector<float> vertices(vertexFloats(layout));
    const VertexPiece whole{0, vertices};
    write(layout, source, {&whole, 1}, {});
    return vertices;
}

} // namespace

bool BuiltPlot::isOf(const PlotLayout& layout, std::span<const std::uint32_t> indexSet) const {
    return dimensions == layout.dimensions && xEdges == layout.xEdges && (dimensions == 2 || zEdges == layout.zEdges) &&
           std::ranges::equal(rows, indexSet);
}

void BuiltPlot::set(const PlotLayout& layout, std::span<const std::uint32_t> indexSet, std::vector<Surface> written) {
    if (!isOf(layout, indexSet)) {
        rows.assign(indexSet.begin(), indexSet.end());
    }
    dimensions = layout.dimensions;
    xEdges = layout.xEdges;
    zEdges = layout.zEdges;
    surfaces = std::move(written);
}

float overallMaximum(const PlotSource& source) {
    float maximum = noMaximum;
    forEachIncluded(source.responses, [&](std::size_t column) {
        const bool usable = column < source.maxima.size() && std::isfinite(source.maxima[column]);
        maximum = std::max(maximum, usable ? source.maxima[column] : greatestFinite(source, column, false, noMaximum));
    });
    if (maximum > 0.0F) {
        return maximum;
    }
    float largest = 0;
    forEachIncluded(source.responses,
                    [&](std::size_t column) { largest = greatestFinite(source, column, true, largest); });
    return largest > 0.0F ? largest : 1.0F;
}

std::uint32_t vertexFloats(const PlotLayout& layout, std::uint64_t held) {
    constexpr std::uint64_t counted = std::numeric_limits<std::uint32_t>::max();
    const auto surfaces = static_cast<std::uint64_t>(std::max(layout.nSurfaces, 0));
    const std::uint64_t bytes =
        product(product(layout.verticesPerSurface(), surfaces), layout.floatsPerVertex() * sizeof(float));
    if (bytes / sizeof(float) > counted) {
        refuse(layout, bytes, fmt::format("no plot can have more than {}", sizeText(counted * sizeof(float))));
    }
    const std::uint64_t available = bytes > held * sizeof(float) ? availableMemory() + held * sizeof(float) : bytes;
    if (bytes > available) {
        refuse(layout, bytes, fmt::format("only {} are free", sizeText(available)));
    }
    return static_cast<std::uint32_t>(bytes / sizeof(float));
}

std::vector<float> make2DVertexData(const PlotLayout& layout, const PlotSource& source) {
    return writtenBy(write2DVertexData, layout, source);
}

std::vector<float> make3DVertexData(const PlotLayout& layout, const PlotSource& source) {
    return writtenBy(write3DVertexData, layout, source);
}

void write2DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<const VertexPiece> pieces,
                       const BuildOptions& options) {
    writePlot(layout, source, 2.0, pieces, options,
              [&](std::span<const SurfaceJob> jobs) { return writeCurves(layout, jobs, pieces, options.progress); });
}

void write3DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<const VertexPiece> pieces,
                       const BuildOptions& options) {
    writePlot(layout, source, 1.0, pieces, options, [&](std::span<const SurfaceJob> jobs) {
        return writeSurfaces(layout, jobs, pieces, options.threads, options.progress);
    });
}

std::vector<VertexRange> vertexRanges(const PlotLayout& layout) {
    const auto count = static_cast<std::uint32_t>(layout.verticesPerSurface());
    std::vector<VertexRange> ranges;
    ranges.reserve(static_cast<std::size_t>(std::max(layout.nSurfaces, 0)));
    for (std::int32_t surface = 0; surface < layout.nSurfaces; ++surface) {
        ranges.push_back({static_cast<std::uint32_t>(surface) * count, count});
    }
    return ranges;
}

std::vector<Color> surfaceColors(std::span<const ResponseVariable> responses) {
    std::vector<Color> colors;
    forEachIncluded(responses, [&](std::size_t column) {
        const Color& color = responses[column].color();
        colors.push_back({color.red, color.green, color.blue, 0.9F});
    });
    return colors;
}

} // namespace orrery
