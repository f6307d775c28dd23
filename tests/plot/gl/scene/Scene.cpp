#include "tests/plot/gl/scene/Scene.h"

#include "plot/data/PlotSession.h"
#include "run/IndependentVariable.h"
#include "run/IndexSet.h"

#include <algorithm>
#include <limits>

namespace orrery::test {

namespace {

std::vector<IndependentVariable> variablesOf(const Scene& scene) {
    std::vector<IndependentVariable> variables(scene.axes.size());
    for (std::size_t i = 0; i < variables.size(); ++i) {
        const bool z = i == 1;
        variables[i].setName(scene.axes[i]);
        variables[i].setStep(1);
        variables[i].setStride(z || variables.size() == 1 ? 1 : scene.zCount);
        variables[i].setStridesPerCycle(z ? scene.zCount : scene.xCount);
        variables[i].setFunction(z ? PlotRole::Axis2 : PlotRole::Axis1);
    }
    return variables;
}

std::vector<ResponseVariable> responsesOf(const Scene& scene) {
    std::vector<ResponseVariable> variables;
    for (std::size_t i = 0; i < scene.responses.size(); ++i) {
        variables.emplace_back("response " + std::to_string(i), std::to_string(i));
        variables.back().setValue("includep", true);
        variables.back().setValue("color", i < scene.colors.size() ? scene.colors[i] : Color{1, 1, 1, 1});
    }
    return variables;
}

std::vector<float> cellsOf(const Scene& scene) {
    std::vector<float> cells;
    for (std::uint32_t x = 0; x < scene.xCount; ++x) {
        for (std::uint32_t z = 0; z < scene.zCount; ++z) {
            for (const auto& response : scene.responses) {
                cells.push_back(response(x, z));
            }
        }
    }
    return cells;
}

} // namespace

void Scene::show(PlotView& view) const {
    const std::vector<IndependentVariable> variables = variablesOf(*this);
    const std::vector<ResponseVariable> variablesShown = responsesOf(*this);
    const std::vector<float> cells = cellsOf(*this);
    std::vector<float> maxima(responses.size(), std::numeric_limits<float>::lowest());
    for (std::size_t i = 0; i < cells.size(); ++i) {
        float& maximum = maxima[i % responses.size()];
        maximum = std::max(maximum, cells[i]);
    }
    const std::vector<std::uint32_t> rows = currentIndexSet(variables);
    showPlot(view, plotLayout(variables, variablesShown), {cells, maxima, variablesShown, rows});
}

} // namespace orrery::test
