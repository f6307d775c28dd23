#pragma once

#include "run/IndependentVariable.h"
#include "run/ResponseVariable.h"
#include "run/ResponseVariables.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// What a table's header is compared with.
struct HeaderExpectation {
    std::span<const IndependentVariable> variables; // of the sweep, "day" last
    const std::vector<ResponseVariable>& recorders; // of the model, in tree order
    /// Whether the model has an input port of that name; asked only where the leading labels differ.
    std::function<bool(std::string_view name)> isInputName;
};

/// What the user should know of a table's header, one sentence or two each; empty when it is as expected.
///
/// What an engine calls its leading fields is its own business. They tell something only where they name inputs of the
/// model (or "day"): when those are others than the sweep's variables, or stand in another order, the table is of
/// another setup.
[[nodiscard]] std::vector<std::string> headerNotes(const std::vector<std::string>& headerLabels,
                                                   const ResponseVariables& matched, const HeaderExpectation& expected);

} // namespace orrery
