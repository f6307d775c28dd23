#include "run/PlotChoices.h"

#include "run/IndexSet.h"

#include <algorithm>
#include <cstddef>

namespace orrery {

namespace {

bool onGrid(const IndependentVariable& variable, float value) {
    if (variable.stridesPerCycle() == 0) return false;
    const float last = heldValueAt(variable, variable.stridesPerCycle() - 1);
    return value >= std::min(variable.start(), last) && value <= std::max(variable.start(), last);
}

} // namespace

bool PlotChoices::chosen() const {
    return std::ranges::any_of(variables, &IndependentVariable::onAxis) &&
           std::ranges::any_of(responses, &ResponseVariable::includep);
}

bool keepChoices(const PlotChoices& choices, std::vector<IndependentVariable>& variables,
                 std::vector<ResponseVariable>& responses) {
    const auto sameNames = [](const auto& left, const auto& right) { return left.name() == right.name(); };
    if (!choices.chosen() || !std::ranges::equal(choices.variables, variables, sameNames) ||
        !std::ranges::equal(choices.responses, responses, sameNames)) {
        return false;
    }
    for (std::size_t i = 0; i < variables.size(); ++i) {
        const IndependentVariable& old = choices.variables[i];
        variables[i].setFunction(old.function());
        variables[i].setUserOrder(old.userOrder());
        if (onGrid(variables[i], old.constant())) variables[i].setConstant(old.constant());
    }
    for (std::size_t i = 0; i < responses.size(); ++i) {
        for (const auto* key : {"includep", "scale", "color"}) {
            responses[i].setValue(key, choices.responses[i].value(key));
        }
    }
    return true;
}

} // namespace orrery
