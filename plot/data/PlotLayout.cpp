#include "plot/data/PlotLayout.h"

#include <algorithm>
#include <limits>

namespace orrery {

namespace {

std::int32_t meshCount(std::uint32_t count) {
    return static_cast<std::int32_t>(std::min<std::uint32_t>(count, std::numeric_limits<std::int32_t>::max()));
}

} // namespace

std::uint64_t PlotLayout::verticesPerSurface() const {
    if (dimensions != 3) {
        return static_cast<std::uint64_t>(std::max(xEdges, 0));
    }
    return static_cast<std::uint64_t>(std::max(xQuads, 0)) * static_cast<std::uint64_t>(std::max(zQuads, 0)) * 6;
}

PlotLayout plotLayout(std::span<const IndependentVariable> variables, std::span<const ResponseVariable> responses) {
    PlotLayout layout;
    for (const IndependentVariable& variable : variables) {
        if (!variable.onAxis()) {
            continue;
        }
        const std::int32_t count = meshCount(variable.stridesPerCycle());
        const bool onZ = layout.xQuads != 0;
        (onZ ? layout.zEdges : layout.xEdges) = count;
        (onZ ? layout.zQuads : layout.xQuads) = count - 1;
        layout.dimensions = onZ ? 3 : 2;
        layout.labels.push_back(variable.name());
    }
    if (layout.dimensions != 0) {
        layout.nSurfaces = static_cast<std::int32_t>(std::ranges::count_if(responses, &ResponseVariable::includep));
    }
    return layout;
}

RoleChange claimAxisRole(std::span<IndependentVariable> variables, std::size_t changed) {
    RoleChange change;
    const IndependentVariable& claimant = variables[changed];
    if (claimant.function() == PlotRole::Held) {
        change.enabled.push_back(changed);
    }
    if (!claimant.onAxis()) {
        return change;
    }
    change.disabled.push_back(changed);
    for (std::size_t position = 0; position < variables.size(); ++position) {
        if (position != changed && variables[position].function() == claimant.function()) {
            variables[position].setFunction(PlotRole::Held);
            change.enabled.push_back(position);
        }
    }
    return change;
}

} // namespace orrery
