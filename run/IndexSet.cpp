#include "run/IndexSet.h"

#include "run/SweepVariables.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orrery {

namespace {

/// Row number of the first chosen row: the held variables at their values, the axes at their first.
std::uint32_t firstRow(std::span<const IndependentVariable> variables) {
    std::uint32_t row = 0;
    for (const IndependentVariable& variable : variables) {
        row += variable.function() == PlotRole::Held ? variable.stride() * heldIndex(variable) : 0;
    }
    return row;
}

bool hasRows(std::span<const IndependentVariable> variables) {
    return !variables.empty() && variables.back().function() <= PlotRole::Axis2 &&
           std::ranges::none_of(variables, [](const auto& variable) { return variable.stridesPerCycle() == 0; });
}

} // namespace

std::uint32_t heldIndex(const IndependentVariable& variable) {
    const float index = std::truncf((variable.constant() - variable.start()) / variable.step());
    if (variable.stridesPerCycle() == 0 || !(index > 0.0F)) {
        return 0;
    }
    const std::uint32_t last = variable.stridesPerCycle() - 1;
    return index < static_cast<float>(last) ? static_cast<std::uint32_t>(index) : last;
}

float heldValueAt(const IndependentVariable& variable, std::uint32_t index) {
    constexpr int mostRoundings = 64;
    IndependentVariable held = variable;
    held.setConstant(valueAtIndex(variable, index));
    const float onward = std::copysign(std::numeric_limits<float>::infinity(), variable.step());
    for (int i = 0; i < mostRoundings && heldIndex(held) < index; ++i) {
        held.setConstant(std::nextafter(held.constant(), onward));
    }
    return held.constant();
}

std::vector<std::uint32_t> currentIndexSet(std::span<const IndependentVariable> variables) {
    if (!hasRows(variables)) {
        return {};
    }
    std::size_t size = 1;
    for (const IndependentVariable& variable : variables) {
        size *= variable.onAxis() ? variable.stridesPerCycle() : 1;
    }
    std::vector<std::uint32_t> rows;
    rows.reserve(size);
    rows.push_back(firstRow(variables));
    // From the fastest axis to the slowest: a stride is longer than all that the faster axes span, so copies of what
    // is there, moved up by one stride each, continue it in ascending order.
    for (auto variable = variables.rbegin(); variable != variables.rend(); ++variable) {
        const std::size_t block = variable->onAxis() ? rows.size() : 0;
        for (std::uint32_t step = 1; block > 0 && step < variable->stridesPerCycle(); ++step) {
            const std::uint32_t offset = step * variable->stride();
            for (std::size_t n = 0; n < block; ++n) {
                rows.push_back(rows[n] + offset);
            }
        }
    }
    return rows;
}

} // namespace orrery
