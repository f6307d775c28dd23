#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orrery {

/// A run of a plot's vertices, which are numbered through from 0.
struct VertexRun {
    std::uint64_t first = 0;
    std::uint64_t count = 0;
    friend bool operator==(const VertexRun&, const VertexRun&) = default;
};

/// What both runs hold; a count of 0 when that is nothing.
[[nodiscard]] constexpr VertexRun overlap(const VertexRun& one, const VertexRun& other) {
    const std::uint64_t first = std::max(one.first, other.first);
    const std::uint64_t end = std::min(one.first + one.count, other.first + other.count);
    return {first, end > first ? end - first : 0};
}

/// Position alone for curves (2), normal and position for surfaces (3).
[[nodiscard]] constexpr std::uint32_t floatsPerVertexOf(std::uint32_t dimensions) {
    return dimensions == 3 ? 6 : 3;
}

/// Cuts the vertices of a plot into runs that take at most that many floats each: surfaces between two cells, curves at
/// a vertex that both runs hold, so that the line goes on from the one to the other.
[[nodiscard]] std::vector<VertexRun> cutVertices(std::uint64_t vertices, std::uint32_t dimensions,
                                                 std::size_t mostFloats);

/// A run of a plot's vertices in memory of its own. It may be the graphics memory itself: to be written, never read.
struct VertexPiece {
    std::uint64_t first = 0; // the plot's vertex that it begins with
    std::span<float> floats;
};

/// Calls write(offset, count, out) for each part of the run that lies in one piece: `count` vertices, counted from
/// `offset` in the run, that go to `out`. What two pieces hold comes twice.
template <typename Write>
void forEachPart(std::span<const VertexPiece> pieces, const VertexRun& run, std::uint32_t floatsPerVertex,
                 Write write) {
    for (const VertexPiece& piece : pieces) {
        const VertexRun part = overlap(run, {piece.first, piece.floats.size() / floatsPerVertex});
        if (part.count > 0) {
            write(part.first - run.first, part.count,
                  piece.floats.data() + (part.first - piece.first) * floatsPerVertex);
        }
    }
}

} // namespace orrery
