// Any setup that the command line reads sweeps a grid whose rows, held values and plots fit together, or is refused.
#include "FuzzTarget.h"
#include "document/setup/ModelPath.h"
#include "document/setup/SetupReader.h"
#include "platform/values/OrreryError.h"
#include "plot/data/PlotLayout.h"
#include "plot/data/VertexData.h"
#include "run/IndexSet.h"
#include "run/SweepSummary.h"
#include "run/SweepVariables.h"
#include "run/table/ResultTable.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace {

using orrery::fuzz::require;

template <class Call>
void orRefused(Call call) {
    try {
        call();
    } catch (const orrery::OrreryError& error) {
        require(!error.problem().empty(), "a refusal says why");
    }
}

void requireGrid(const orrery::SweepGrid& grid) {
    std::uint64_t rows = 1;
    for (auto variable = grid.variables.rbegin(); variable != grid.variables.rend(); ++variable) {
        require(rows == 0 || variable->stride() == rows, "a stride is what the faster variables span");
        rows *= variable->stridesPerCycle();
        require(orrery::heldIndex(*variable) < std::max(variable->stridesPerCycle(), 1U),
                "a held value is on the grid");
    }
    require(grid.nRowsOfData == rows, "the rows are the product of the counts");
}

void requirePlot(orrery::SweepGrid& grid, std::size_t first) {
    constexpr std::uint32_t mostRows = 100'000; // so that an input takes no time to speak of
    for (std::size_t n = 0; n < grid.variables.size(); ++n) {
        grid.variables[n].setFunction(n == first       ? orrery::PlotRole::Axis1
                                      : n == first + 1 ? orrery::PlotRole::Axis2
                                                       : orrery::PlotRole::Held);
    }
    std::vector<orrery::ResponseVariable> responses(3);
    responses[1].setValue("includep", true);
    const orrery::PlotLayout layout = orrery::plotLayout(grid.variables, responses);
    orRefused([&] { (void)orrery::vertexFloats(layout); });
    if (grid.nRowsOfData > mostRows) return;
    const std::vector<std::uint32_t> rows = orrery::currentIndexSet(grid.variables);
    require(std::ranges::adjacent_find(rows, std::greater_equal()) == rows.end(), "the rows ascend");
    require(rows.empty() || rows.back() < grid.nRowsOfData, "the rows are the grid's");
    const std::vector<float> cells(rows.size() * responses.size(), 1.0F);
    const std::vector<float> maxima(responses.size(), 1.0F);
    orRefused([&] {
        (void)(layout.dimensions == 2 ? orrery::make2DVertexData
                                      : orrery::make3DVertexData)(layout, {cells, maxima, responses, rows});
    });
}

} // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    orRefused([&] {
        const orrery::SetupDictionary setup =
            orrery::readSetup(orrery::fuzz::asText(data, size), "/folder/input.orrery").dictionary;
        (void)orrery::resolvedPath(setup.textOrEmpty(orrery::setup_key::modelPath), "/folder/input.orrery");
        (void)orrery::sweepSummary(setup, orrery::currentCalendar(), 3);
        orrery::SweepGrid grid = orrery::constructIndependentVariables(setup, orrery::currentCalendar());
        requireGrid(grid);
        (void)orrery::sweepWarnings(setup, grid);
        orRefused([&] { orrery::requireBlockFits({grid.nRowsOfData, grid.variables.size() + 1, 3}); });
        for (std::size_t first = 0; first < std::min<std::size_t>(grid.variables.size(), 3); ++first) {
            requirePlot(grid, first);
        }
    });
    return 0;
}
