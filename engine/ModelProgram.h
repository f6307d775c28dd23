#pragma once

#include "engine/DelayChain.h"
#include "engine/Expression.h"
#include "engine/PortNetwork.h"
#include "engine/PortValues.h"
#include "engine/Rule.h"
#include "engine/RuleFactory.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace orrery::engine {

/// A model made ready to run: its formulas compiled once, its parts in the order in which they depend on each other.
///
/// It holds the values of one moment; state() is all of them, to be copied out and in between cells. States are
/// integrated by Euler steps, and a state or a delay breaks a cycle.
class ModelProgram {
public:
    /// @param setPorts the input ports that the setup sets
    /// @throws OrreryError naming the file, the port and the fault, also for an algebraic cycle
    ModelProgram(const PortNetwork& network, const std::set<std::size_t>& setPorts, double stepDays);

    /// Puts every port back to its default. Set the setup's ports next, then start.
    void reset() { m_values.reset(); }
    void set(std::size_t inputPort, double value) { m_values.set(inputPort, value); }
    /// Gives the states their initial values and evaluates everything.
    void start(const Moment& moment);
    /// One step: integrates with the present values, then evaluates everything at the moment.
    void advance(const Moment& moment);

    [[nodiscard]] double value(std::size_t port) const { return m_values.at(port); }
    [[nodiscard]] std::span<double> state() { return m_values.all(); }
    /// What the user should know about the model, one line each.
    [[nodiscard]] std::vector<std::string> notes() const;

private:
    struct Computation {
        std::size_t port = 0;
        double* target = nullptr;
        std::unique_ptr<Rule> rule;
    };
    struct State {
        double* target = nullptr;
        Expression rate;
        double change = 0;
    };
    using Order = std::vector<const Computation*>;

    void compile(const NetworkPart& part, std::size_t partIndex);
    void compileOutput(const PartContext& context, std::size_t output);
    void addState(const PartContext& context, std::size_t output);
    void addFollowers(const std::set<std::size_t>& setPorts);
    [[nodiscard]] Order ordered(const std::vector<const Computation*>& computations) const;
    static void evaluate(const Order& order, const Moment& moment);
    void setClock(const Moment& moment);

    const PortNetwork& m_network;
    PortValues m_values;
    std::deque<DelayChain> m_chains; // the rules point into it
    std::vector<Computation> m_computations;
    std::vector<Computation> m_initials;
    std::vector<State> m_states;
    Order m_order;
    Order m_startOrder;
};

} // namespace orrery::engine
