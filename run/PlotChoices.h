#pragma once

#include "run/IndependentVariable.h"
#include "run/ResponseVariable.h"

#include <vector>

namespace orrery {

/// What a user chose to see of a run: axis roles and held values of the sweep variables; include, scale and colour of
/// the responses.
struct PlotChoices {
    std::vector<IndependentVariable> variables;
    std::vector<ResponseVariable> responses;

    /// Whether there is anything worth keeping: a variable on an axis and an included response.
    [[nodiscard]] bool chosen() const;
};

/// Carries the choices over to a new run's variables and responses, when those have the same names in the same order.
/// A held value outside a variable's new grid is left at the new run's own. Returns whether they were carried over.
bool keepChoices(const PlotChoices& choices, std::vector<IndependentVariable>& variables,
                 std::vector<ResponseVariable>& responses);

} // namespace orrery
