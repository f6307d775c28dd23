#pragma once

#include "plot/data/PlotView.h"
#include "run/ResponseVariable.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orrery::test {

/// A plot made up of functions: what a run would have left, without a run.
struct Scene {
    std::vector<std::string> axes; // one name: curves; two: surfaces
    std::uint32_t xCount = 2;
    std::uint32_t zCount = 1;
    /// The value of a response at the grid point (x, z).
    std::vector<std::function<float(std::uint32_t, std::uint32_t)>> responses;
    std::vector<Color> colors = {}; // one per response; the rest are white

    /// Gives the plot to a view, as a document does.
    void show(PlotView& view) const;
};

} // namespace orrery::test
