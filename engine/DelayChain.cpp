#include "engine/DelayChain.h"

#include <algorithm>
#include <numeric>

namespace orrery::engine {

namespace {

double valueOr(const double* input, double otherwise) {
    return input == nullptr ? otherwise : *input;
}

} // namespace

void DelayChain::start() {
    std::ranges::fill(m_stages, valueOr(m_inputs.initial, 0) / static_cast<double>(m_stages.size()));
}

void DelayChain::advance() {
    const double passed = rate() * m_stepDays;
    const double lost = loss() * m_stepDays;
    double arriving = valueOr(m_inputs.inflow, 0) * m_stepDays;
    for (double& stage : m_stages) {
        const double leaving = passed * stage;
        stage += arriving - leaving - lost * stage;
        arriving = leaving;
    }
}

double DelayChain::storage() const {
    return std::accumulate(m_stages.begin(), m_stages.end(), 0.0);
}

std::vector<const double*> DelayChain::outflowUses() const {
    std::vector<const double*> uses;
    for (const double* input : {m_inputs.delay, m_inputs.progress, m_inputs.attrition}) {
        if (input != nullptr) {
            uses.push_back(input);
        }
    }
    return uses;
}

double DelayChain::rate() const {
    const double progress = valueOr(m_inputs.progress, 1) * static_cast<double>(m_stages.size());
    const double most = 1 / m_stepDays - loss();
    const double delay = valueOr(m_inputs.delay, 1);
    if (!(progress > 0)) {
        return 0;
    }
    return delay > 0 ? std::min(progress / delay, most) : most;
}

double DelayChain::loss() const {
    return std::clamp(valueOr(m_inputs.attrition, 0), 0.0, 1 / m_stepDays);
}

} // namespace orrery::engine
