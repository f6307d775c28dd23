#include "plot/data/VertexData.h"

#include "platform/Files.h"
#include "platform/OrreryError.h"
#include "platform/Workers.h"
#include "plot/data/SurfaceStrip.h"
#include "run/ResultTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orrery {

namespace {

/// The heights of one curve or surface: a column's values at the grid points times a factor.
class Heights {
public:
    Heights(const PlotSource& source, std::size_t column, double perUnit)
        : m_cells(source.cells), m_rows(source.rows), m_columns(source.responses.size()), m_column(column),
          m_factor(static_cast<float>(static_cast<double>(source.responses[column].scale()) * perUnit)) {}

    [[nodiscard]] float at(std::size_t point) const { return point < m_rows.size() ? inRow(m_rows[point]) : 0.0F; }

    /// Those of as many points as there is room for.
    void copyTo(std::span<float> heights, std::size_t firstPoint) const {
        const std::span rows = m_rows.subspan(std::min(firstPoint, m_rows.size()));
        const std::size_t count = std::min(heights.size(), rows.size());
        for (std::size_t n = 0; n < count; ++n) {
            heights[n] = inRow(rows[n]);
        }
        std::ranges::fill(heights.subspan(count), 0.0F);
    }

private:
    [[nodiscard]] float inRow(std::size_t row) const {
        const std::size_t cell = row * m_columns + m_column;
        return cell < m_cells.size() ? m_cells[cell] * m_factor : 0.0F;
    }

    std::span<const float> m_cells;
    std::span<const std::uint32_t> m_rows;
    std::size_t m_columns;
    std::size_t m_column;
    float m_factor;
};

/// Position of a grid point on an axis that −1 and +1 bound when `half` is half the number of cells.
float axisPosition(std::size_t index, float half) {
    return static_cast<float>(index) / half - 1.0F;
}

float halfOf(std::int32_t count) {
    return static_cast<float>(static_cast<double>(count) * 0.5);
}

float* writeCurve(std::size_t points, float half, const Heights& heights, float* out) {
    for (std::size_t i = 0; i < points; ++i) {
        *out++ = axisPosition(i, half);
        *out++ = heights.at(i) - 1.0F;
        *out++ = 0.0F;
    }
    return out;
}

/// Floats of a surface that the caches will not hold until it is drawn.
constexpr std::size_t streamedFrom = 8U << 20U;

/// Writes the cells between the grid lines `first` and `last` of x.
void writeStrips(const PlotLayout& layout, const Heights& heights, std::size_t first, std::size_t last, float* out) {
    const auto cells = static_cast<std::size_t>(layout.zQuads);
    const std::size_t edges = cells + 1;
    const bool streamed = static_cast<std::size_t>(layout.xQuads) * cells * floatsPerCell >= streamedFrom;
    const float halfX = halfOf(layout.xQuads);
    const float halfZ = halfOf(layout.zQuads);
    std::vector<float> z(edges);
    std::vector<float> y0(edges);
    std::vector<float> y1(edges);
    for (std::size_t k = 0; k < edges; ++k) {
        z[k] = axisPosition(k, halfZ);
    }
    heights.copyTo(y1, first * edges);
    for (std::size_t i = first; i < last; ++i) {
        std::swap(y0, y1);
        heights.copyTo(y1, (i + 1) * edges);
        writeStrip({axisPosition(i, halfX), axisPosition(i + 1, halfX), z.data(), y0.data(), y1.data()}, cells,
                   streamed, out);
        out += cells * floatsPerCell;
    }
    finishStreaming();
}

/// Cells do not depend on one another, so the bits are the same for any number of threads.
float* writeSurface(const PlotLayout& layout, const Heights& heights, unsigned threads, float* out) {
    const auto strips = static_cast<std::size_t>(layout.xQuads);
    const std::size_t floatsPerStrip = static_cast<std::size_t>(layout.zQuads) * floatsPerCell;
    runTogether(threads, [&](unsigned part) {
        const std::size_t first = strips * part / threads;
        writeStrips(layout, heights, first, strips * (part + 1) / threads, out + first * floatsPerStrip);
    });
    return out + strips * floatsPerStrip;
}

/// Starting a thread costs about as much as some thousand cells.
unsigned threadsFor(const PlotLayout& layout) {
    constexpr std::int64_t worthwhile = 25'000;
    return workersFor(static_cast<std::size_t>(std::int64_t{layout.xQuads} * layout.zQuads / worthwhile));
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
    for (std::size_t cell = column; cell < source.cells.size(); cell += source.responses.size()) {
        const float value = absolute ? std::fabs(source.cells[cell]) : source.cells[cell];
        least = std::isfinite(value) && value > least ? value : least;
    }
    return least;
}

std::size_t floatCount(const PlotLayout& layout) {
    const std::uint64_t perSurface = layout.verticesPerSurface() * layout.floatsPerVertex();
    const auto surfaces = static_cast<std::uint64_t>(std::max(layout.nSurfaces, 0));
    constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
    if (surfaces > 0 && (perSurface > most / surfaces || perSurface * surfaces * sizeof(float) > availableMemory())) {
        throw OrreryError(fmt::format("A plot of {} responses with {} vertices each does not fit into memory.",
                                      surfaces, layout.verticesPerSurface()),
                          {}, "Include fewer responses, or put a variable with fewer values on an axis.");
    }
    return perSurface * surfaces;
}

void requireFloatCount(const PlotLayout& layout, const PlotSource& source, std::size_t floats) {
    const auto included = std::ranges::count_if(source.responses, &ResponseVariable::includep);
    if (included != layout.nSurfaces ||
        floats != static_cast<std::uint64_t>(included) * layout.verticesPerSurface() * layout.floatsPerVertex()) {
        throw AssertionFailure("Inconsistent float count");
    }
}

} // namespace

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

std::vector<float> make2DVertexData(const PlotLayout& layout, const PlotSource& source) {
    std::vector<float> vertices(floatCount(layout));
    write2DVertexData(layout, source, vertices);
    return vertices;
}

std::vector<float> make3DVertexData(const PlotLayout& layout, const PlotSource& source) {
    std::vector<float> vertices(floatCount(layout));
    write3DVertexData(layout, source, vertices);
    return vertices;
}

void write2DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<float> vertices) {
    requireFloatCount(layout, source, vertices.size());
    if (vertices.empty()) {
        return;
    }
    const double perUnit = 2.0 / static_cast<double>(overallMaximum(source));
    const auto points = static_cast<std::size_t>(layout.xEdges);
    float* out = vertices.data();
    forEachIncluded(source.responses, [&](std::size_t column) {
        out = writeCurve(points, halfOf(layout.xEdges), Heights(source, column, perUnit), out);
    });
}

void write3DVertexData(const PlotLayout& layout, const PlotSource& source, std::span<float> vertices,
                       unsigned threads) {
    requireFloatCount(layout, source, vertices.size());
    if (vertices.empty()) {
        return;
    }
    const double perUnit = 1.0 / static_cast<double>(overallMaximum(source));
    float* out = vertices.data();
    const unsigned used = threads == 0 ? threadsFor(layout) : threads;
    forEachIncluded(source.responses, [&](std::size_t column) {
        out = writeSurface(layout, Heights(source, column, perUnit), used, out);
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
