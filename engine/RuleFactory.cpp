#include "engine/RuleFactory.h"

#include "document/setup/ModelPath.h"
#include "engine/FileColumn.h"
#include "engine/LookupTable.h"
#include "engine/PartClass.h"
#include "engine/PartRules.h"
#include "platform/values/Quoted.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace orrery::engine {

namespace {

std::unique_ptr<Rule> makeDelayRule(const PartContext& context, const NetworkPort& output) {
    const std::string_view quantity = output.attribute("quantity");
    if (quantity == "storage") {
        return std::make_unique<DelayStorage>(*context.chain);
    }
    if (quantity.empty() || quantity == "outflow") {
        return std::make_unique<DelayOutflow>(*context.chain);
    }
    throw OrreryError(portLabel(output, "quantity") + ": a delay has no quantity " + quoted(quantity) + ".",
                      context.network.placeOf(output), "Write “outflow” or “storage”.");
}

std::unique_ptr<Rule> makeTableRule(const PartContext& context, LookupTable table) {
    const double* const input = context.part.inputs.empty() ? nullptr : context.values.at(context.part.inputs.front());
    return std::make_unique<TableRule>(std::move(table), input);
}

std::unique_ptr<Rule> makeLookupRule(const PartContext& context, const NetworkPort& output) {
    const std::string_view own = output.attribute("table");
    const std::string_view text = own.empty() ? context.part.attribute("table") : own;
    return makeTableRule(context,
                         LookupTable::fromText(text, context.network.placeOf(output), portLabel(output, "table")));
}

std::unique_ptr<Rule> makeFileRule(const PartContext& context, const NetworkPort& output) {
    const std::string path = resolvedPath(context.part.attribute("file"), context.network.modelPath());
    const std::string_view column = output.attribute("column");
    return makeTableRule(context, fileColumn(path, column.empty() ? output.name() : column,
                                             context.network.placeOf(context.part), portLabel(output, "column")));
}

std::unique_ptr<Rule> makeWeatherRule(const PartContext& context, const NetworkPort& output) {
    const auto formula = [&](std::string_view key, std::string_view otherwise) {
        return formulaOf(context, output, key, otherwise);
    };
    std::optional<Expression> minimum;
    if (!output.attribute("minimum").empty()) {
        minimum = formula("minimum", {});
    }
    return std::make_unique<YearlyCurveRule>(YearlyCurveRule::Curve{formula("mean", "0"), formula("amplitude", "0"),
                                                                    formula("peakDay", "200"), std::move(minimum)});
}

double numberOf(const PartContext& context, std::string_view attribute, double otherwise) {
    const std::string_view text = context.part.attribute(attribute);
    if (text.empty()) {
        return otherwise;
    }
    return numberIn(text, context.network.placeOf(context.part), partLabel(context.part, attribute));
}

std::unique_ptr<Rule> makeRandomRule(const PartContext& context, const NetworkPort& output) {
    const std::string_view distribution = context.part.attribute("distribution");
    const bool normal = distribution == "normal";
    const double interval = numberOf(context, "interval", 1);
    const double seed = numberOf(context, "seed", 0);
    if ((!normal && !distribution.empty() && distribution != "uniform") || !(interval > 0) || seed < 0 || seed > 1e15) {
        throw OrreryError(partLabel(context.part) + " cannot draw numbers with these attributes.",
                          context.network.placeOf(context.part),
                          "Write “uniform” or “normal” as distribution, an interval above 0 and a seed of at least 0.");
    }
    // Outputs differ by their place among the model's ports.
    const auto stream = static_cast<std::uint64_t>(&output - context.network.ports().data());
    const std::uint64_t mixedSeed = static_cast<std::uint64_t>(seed) * 1000003U + stream;
    return std::make_unique<RandomRule>(
        RandomRule::Draw{mixedSeed, interval, normal, formulaOf(context, output, normal ? "mean" : "minimum", "0"),
                         formulaOf(context, output, normal ? "deviation" : "maximum", "1")});
}

} // namespace

std::unique_ptr<Rule> makeRule(const PartContext& context, const NetworkPort& output) {
    switch (partClass(context.part)) {
    case PartClass::Formula:
        return std::make_unique<FormulaRule>(formulaOf(context, output, "expression", {}));
    case PartClass::Delay:
        return makeDelayRule(context, output);
    case PartClass::Lookup:
        return makeLookupRule(context, output);
    case PartClass::Random:
        return makeRandomRule(context, output);
    case PartClass::Weather:
        return makeWeatherRule(context, output);
    case PartClass::FileColumn:
        return makeFileRule(context, output);
    case PartClass::Level:
    case PartClass::Passing:
        break;
    }
    throw AssertionFailure("an output that passes an input on needs no rule");
}

Expression formulaOf(const PartContext& context, const NetworkPort& output, std::string_view attribute,
                     std::string_view otherwise) {
    const std::string_view text = output.attribute(attribute);
    return {std::string(text.empty() ? otherwise : text), context.variables, context.network.placeOf(output),
            portLabel(output, attribute)};
}

DelayChain::Inputs delayInputs(const PortNetwork& network, const NetworkPart& part, PortValues& values) {
    DelayChain::Inputs inputs;
    const std::pair<std::string_view, const double**> byName[] = {{"inflow", &inputs.inflow},
                                                                  {"delay", &inputs.delay},
                                                                  {"progress", &inputs.progress},
                                                                  {"attrition", &inputs.attrition},
                                                                  {"initial", &inputs.initial}};
    const double* unnamed = nullptr; // the first input of another name is the inflow when none is called so
    for (const std::size_t port : part.inputs) {
        bool known = false;
        for (const auto& [name, place] : byName) {
            if (network.ports()[port].name() != name) {
                continue;
            }
            *place = values.at(port);
            known = true;
        }
        if (!known && unnamed == nullptr) {
            unnamed = values.at(port);
        }
    }
    if (inputs.inflow == nullptr) {
        inputs.inflow = unnamed;
    }
    return inputs;
}

} // namespace orrery::engine
