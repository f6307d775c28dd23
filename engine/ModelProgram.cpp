#include "engine/ModelProgram.h"

#include "engine/EvaluationOrder.h"
#include "engine/PartClass.h"
#include "engine/PartRules.h"
#include "platform/values/Quoted.h"

#include <unordered_map>
#include <utility>

namespace orrery::engine {

namespace {

std::string portsNote(const PortNetwork& network, const std::vector<std::size_t>& ports, const char* text) {
    return "Note: " + std::to_string(ports.size()) + text + " (the first is " +
           quoted(network.ports()[ports.front()].path) + ").";
}

} // namespace

ModelProgram::ModelProgram(const PortNetwork& network, const std::set<std::size_t>& setPorts, double stepDays)
    : m_network(network), m_values(network, setPorts) {
    m_values.stepDays() = stepDays;
    for (std::size_t part = 0; part < network.parts().size(); ++part) {
        compile(network.parts()[part], part);
    }
    addFollowers(setPorts);

    std::vector<const Computation*> computations;
    for (const Computation& computation : m_computations) {
        computations.push_back(&computation);
    }
    m_order = ordered(computations);
    for (const Computation& initial : m_initials) {
        computations.push_back(&initial);
    }
    m_startOrder = ordered(computations);
}

void ModelProgram::start(const Moment& moment) {
    setClock(moment);
    evaluate(m_startOrder, moment); // gives the chains' inputs their values,
    for (DelayChain& chain : m_chains) {
        chain.start();
    }
    evaluate(m_startOrder, moment); // and this what depends on the chains' content
}

void ModelProgram::advance(const Moment& moment) {
    for (State& state : m_states) {
        state.change = m_values.stepDays() * state.rate.value();
    }
    for (DelayChain& chain : m_chains) {
        chain.advance();
    }
    for (const State& state : m_states) {
        *state.target += state.change;
    }
    setClock(moment);
    evaluate(m_order, moment);
}

std::vector<std::string> ModelProgram::notes() const {
    std::vector<std::string> notes;
    if (!m_values.emptyInputs().empty()) {
        notes.push_back(
            portsNote(m_network, m_values.emptyInputs(), " input(s) have no source and no default and are 0"));
    }
    if (!m_values.passingOutputs().empty()) {
        notes.push_back(
            portsNote(m_network, m_values.passingOutputs(), " output(s) pass an input of their part through"));
    }
    return notes;
}

void ModelProgram::compile(const NetworkPart& part, std::size_t partIndex) {
    const DelayChain* chain = nullptr;
    if (partClass(part) == PartClass::Delay) {
        chain = &m_chains.emplace_back(delayInputs(m_network, part, m_values), m_values.stages(partIndex),
                                       m_values.stepDays());
    }
    std::optional<Variables> variables; // only for parts that compute, whose port names must be told apart
    for (const std::size_t output : part.outputs) {
        if (!isComputed(part, m_network.ports()[output])) {
            continue;
        }
        if (!variables) {
            variables = m_values.variablesOf(part);
        }
        compileOutput({m_network, part, m_values, *variables, chain}, output);
    }
}

void ModelProgram::compileOutput(const PartContext& context, std::size_t output) {
    const NetworkPort& port = m_network.ports()[output];
    const bool hasRate = partClass(context.part) == PartClass::Formula && !port.attribute("rate").empty();
    if (hasRate && !port.attribute("expression").empty()) {
        throw OrreryError(portLabel(port) + " has both an expression and a rate.", m_network.placeOf(port),
                          "Keep the rate for a state, the expression for anything else.");
    }
    if (hasRate) {
        addState(context, output);
    } else {
        m_computations.push_back({output, m_values.at(output), makeRule(context, port)});
    }
}

void ModelProgram::addState(const PartContext& context, std::size_t output) {
    const NetworkPort& port = m_network.ports()[output];
    double* const target = m_values.at(output);
    m_states.push_back({target, formulaOf(context, port, "rate", {})});
    m_initials.push_back({output, target, std::make_unique<FormulaRule>(formulaOf(context, port, "initial", "0"))});
}

/// Ports with a source that the setup sets in some cells: they need a rule to choose.
void ModelProgram::addFollowers(const std::set<std::size_t>& setPorts) {
    for (const std::size_t port : setPorts) {
        const double* const fixed = m_values.fixed(port);
        if (fixed == nullptr) {
            continue;
        }
        const double* const source = m_values.at(*m_network.ports()[port].source);
        m_computations.push_back({port, m_values.at(port), std::make_unique<FollowRule>(fixed, source)});
    }
}

ModelProgram::Order ModelProgram::ordered(const std::vector<const Computation*>& computations) const {
    std::unordered_map<const double*, std::size_t> computing;
    for (std::size_t item = 0; item < computations.size(); ++item) {
        computing[computations[item]->target] = item;
    }
    std::vector<std::vector<std::size_t>> needs(computations.size());
    for (std::size_t item = 0; item < computations.size(); ++item) {
        for (const double* used : computations[item]->rule->uses()) {
            if (const auto found = computing.find(used); found != computing.end()) {
                needs[item].push_back(found->second);
            }
        }
    }
    Order order;
    try {
        for (const std::size_t item : evaluationOrder(needs)) {
            order.push_back(computations[item]);
        }
    } catch (const DependencyCycle& cycle) {
        std::string path;
        for (const std::size_t item : cycle.items()) {
            path += m_network.ports()[computations[item]->port].path + " -> ";
        }
        const NetworkPort& first = m_network.ports()[computations[cycle.items().front()]->port];
        throw OrreryError("Algebraic cycle: " + messageText(path + first.path) + ".", m_network.placeOf(first),
                          "Put a state (an output with a rate) or a delay into it.");
    }
    return order;
}

void ModelProgram::evaluate(const Order& order, const Moment& moment) {
    for (const Computation* computation : order) {
        *computation->target = computation->rule->value(moment);
    }
}

void ModelProgram::setClock(const Moment& moment) {
    m_values.time() = moment.time;
    m_values.day() = moment.dayOfYear;
}

} // namespace orrery::engine
