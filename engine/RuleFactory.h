#pragma once

#include "engine/DelayChain.h"
#include "engine/Expression.h"
#include "engine/PortNetwork.h"
#include "engine/PortValues.h"
#include "engine/Rule.h"

#include <memory>
#include <string_view>

namespace orrery::engine {

/// What a part's rules are made from.
struct PartContext {
    const PortNetwork& network;
    const NetworkPart& part;
    PortValues& values;
    const Variables& variables; // what the part's formulas may name
    const DelayChain* chain;    // of a delay part
};

/// The rule of an output that is computed and has no rate. @throws OrreryError naming the file, the port and the fault
[[nodiscard]] std::unique_ptr<Rule> makeRule(const PartContext& context, const NetworkPort& output);

/// The formula in the output's attribute, or in `otherwise` when it has none.
[[nodiscard]] Expression formulaOf(const PartContext& context, const NetworkPort& output, std::string_view attribute,
                                   std::string_view otherwise);

/// The input ports of a delay part, found by their names.
[[nodiscard]] DelayChain::Inputs delayInputs(const PortNetwork& network, const NetworkPart& part, PortValues& values);

} // namespace orrery::engine
