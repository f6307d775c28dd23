#pragma once

#include "engine/Rule.h"

#include <cstddef>
#include <span>
#include <vector>

namespace orrery::engine {

/// A distributed delay: what flows in passes through k equal stages, each of which gives off its content at the rate
/// k × progress / delay. Its mean residence is `delay` units of progress (days, when progress is 1 a day, or
/// degree-days, when progress is degree-days a day), and what flows out plus what is lost is what flowed in.
///
/// A stage cannot give off more than it holds within a step, so a delay below stages × step is held there.
class DelayChain {
public:
    /// Where the inputs stand; nullptr for one that the part lacks, which takes the value given here.
    struct Inputs {
        const double* inflow = nullptr;    // a day; 0
        const double* delay = nullptr;     // units of progress; 1
        const double* progress = nullptr;  // units of progress a day; 1
        const double* attrition = nullptr; // fraction lost a day; 0
        const double* initial = nullptr;   // content at the start, spread evenly; 0
    };

    DelayChain(const Inputs& inputs, std::span<double> stages, double stepDays)
        : m_inputs(inputs), m_stages(stages), m_stepDays(stepDays) {}

    void start();
    void advance(); // by one step, with the inputs' present values
    [[nodiscard]] double outflow() const { return rate() * m_stages.back(); } // a day
    [[nodiscard]] double storage() const;
    /// What the outflow depends on at once; the inflow comes out only later.
    [[nodiscard]] std::vector<const double*> outflowUses() const;

private:
    [[nodiscard]] double rate() const; // fraction that leaves a stage a day
    [[nodiscard]] double loss() const; // fraction that is lost of a stage a day

    Inputs m_inputs;
    std::span<double> m_stages;
    double m_stepDays;
};

/// The outflow of a chain, or its content, as an output's rule. The chain outlives it.
class DelayOutflow : public Rule {
public:
    explicit DelayOutflow(const DelayChain& chain) : m_chain(&chain) {}
    [[nodiscard]] double value(const Moment&) const override { return m_chain->outflow(); }
    [[nodiscard]] std::vector<const double*> uses() const override { return m_chain->outflowUses(); }

private:
    const DelayChain* m_chain;
};

class DelayStorage : public Rule {
public:
    explicit DelayStorage(const DelayChain& chain) : m_chain(&chain) {}
    [[nodiscard]] double value(const Moment&) const override { return m_chain->storage(); }
    [[nodiscard]] std::vector<const double*> uses() const override { return {}; }

private:
    const DelayChain* m_chain;
};

} // namespace orrery::engine
