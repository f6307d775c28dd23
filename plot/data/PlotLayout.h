#pragma once

#include "plot/data/VertexPieces.h"
#include "run/IndependentVariable.h"
#include "run/ResponseVariable.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orrery {

/// The counts of a plot's mesh and what stands on its axes.
struct PlotLayout {
    std::int32_t nSurfaces = 0; // included response variables: one curve (2-D) or surface (3-D) each
    std::int32_t xEdges = 0;    // grid points along x
    std::int32_t xQuads = 0;    // grid cells along x
    std::int32_t zEdges = 0;
    std::int32_t zQuads = 0;
    std::uint32_t dimensions = 0;    // 0 nothing to plot, 2 curves, 3 surfaces
    std::vector<std::string> labels; // names of the axis variables, x first, then z

    /// Whether there is an axis and something to draw over it.
    [[nodiscard]] bool isDrawn() const { return dimensions != 0 && nSurfaces != 0; }
    /// Vertices of one curve or surface, and floats per vertex.
    [[nodiscard]] std::uint64_t verticesPerSurface() const;
    [[nodiscard]] std::uint32_t floatsPerVertex() const { return floatsPerVertexOf(dimensions); }
};

/// Which variables lie on which axis: those with a role 1 or 2 in list order, x first. A variable of one value on x
/// leaves x to the next one.
[[nodiscard]] PlotLayout plotLayout(std::span<const IndependentVariable> variables,
                                    std::span<const ResponseVariable> responses);

/// After the user changed the role of the variable at `changed`: sets the role of every other variable that holds the
/// same axis to 0. Returns the positions of the variables whose held value may now be edited and of those whose may
/// not.
struct RoleChange {
    std::vector<std::size_t> enabled;
    std::vector<std::size_t> disabled;
};
RoleChange claimAxisRole(std::span<IndependentVariable> variables, std::size_t changed);

} // namespace orrery
