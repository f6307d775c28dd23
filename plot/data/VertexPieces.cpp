#include "plot/data/VertexPieces.h"

namespace orrery {

std::vector<VertexRun> cutVertices(std::uint64_t vertices, std::uint32_t dimensions, std::size_t mostFloats) {
    const std::uint64_t shared = dimensions == 3 ? 0 : 1;
    const std::uint64_t unit = dimensions == 3 ? 6 : 1; // vertices that stay together
    const std::uint64_t fitting = mostFloats / floatsPerVertexOf(dimensions) / unit * unit;
    const std::uint64_t most = std::max(fitting, unit + shared);
    std::vector<VertexRun> runs;
    for (std::uint64_t first = 0; first + shared < vertices || (first == 0 && vertices > 0); first += most - shared) {
        runs.push_back({first, std::min(most, vertices - first)});
    }
    return runs;
}

} // namespace orrery
