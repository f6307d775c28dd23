#include "engine/Simulation.h"

#include "engine/PartClass.h"
#include "platform/values/Numbers.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orrery::engine {

Simulation::Simulation(const PortNetwork& network, const RunPlan& plan, std::vector<std::size_t> watched)
    : m_network(network), m_plan(plan), m_watched(std::move(watched)),
      m_program(network, plan.setPorts(), plan.stepDays), m_values(m_watched.size() * plan.cellCount()) {
    if (plan.spatial()) {
        m_cells.resize(plan.cellCount());
    }
}

void Simulation::begin(std::uint32_t combination) {
    m_combination = combination;
    m_step = 0;
    for (std::size_t cell = 0; cell < m_plan.cellCount(); ++cell) {
        startCell(cell);
        if (!m_cells.empty()) {
            m_cells[cell].assign(m_program.state().begin(), m_program.state().end());
        }
    }
}

std::span<const double> Simulation::report(std::uint32_t dayIndex, const std::function<void()>& onStep) {
    const std::uint64_t target = m_plan.stepsBefore(dayIndex);
    for (std::size_t cell = 0; cell < m_plan.cellCount(); ++cell) {
        if (!m_cells.empty()) {
            std::ranges::copy(m_cells[cell], m_program.state().begin());
        }
        for (std::uint64_t step = m_step; step < target; ++step) {
            m_program.advance(momentAt(step + 1, cell));
            onStep();
        }
        gather(cell, dayIndex);
        if (!m_cells.empty()) {
            std::ranges::copy(m_program.state(), m_cells[cell].begin());
        }
    }
    m_step = target;
    return m_values;
}

void Simulation::startCell(std::size_t cell) {
    m_program.reset();
    for (const PortAssignment& given : m_plan.initializations) {
        if (!given.cell || *given.cell == cell) {
            m_program.set(given.port, given.value);
        }
    }
    // A stepper has the last word: the row says that the port has its value.
    for (std::size_t index = 0; index < m_plan.stepperPorts.size(); ++index) {
        const IndependentVariable& variable = m_plan.grid.variables[index];
        const std::uint32_t combinationsPerStep = variable.stride() / m_plan.day().stridesPerCycle();
        const std::uint32_t position = m_combination / combinationsPerStep % variable.stridesPerCycle();
        m_program.set(m_plan.stepperPorts[index], static_cast<double>(valueAtIndex(variable, position)));
    }
    m_program.start(momentAt(0, cell));
}

Moment Simulation::momentAt(std::uint64_t step, std::size_t cell) const {
    Moment moment;
    moment.time = static_cast<double>(step) * m_plan.stepDays;
    moment.dayOfYear = 1 + std::fmod(static_cast<double>(m_plan.day().start()) - 1 + moment.time, 365);
    moment.gridPoint = (std::uint64_t{m_combination} << 32U) | cell;
    return moment;
}

void Simulation::gather(std::size_t cell, std::uint32_t dayIndex) {
    for (std::size_t index = 0; index < m_watched.size(); ++index) {
        const double value = m_program.value(m_watched[index]);
        m_values[index * m_plan.cellCount() + cell] = value;
        if (std::isfinite(static_cast<float>(value))) {
            continue;
        }
        const NetworkPort& port = m_network.ports()[m_watched[index]];
        const std::uint64_t row = std::uint64_t{m_combination} * m_plan.day().stridesPerCycle() + dayIndex;
        throw OrreryError(portLabel(port) + " is no longer a finite number in row " + std::to_string(row) + ", day " +
                              shortestText(valueAtIndex(m_plan.day(), dayIndex)) + ".",
                          m_network.placeOf(port),
                          "Look for a division by 0 or a logarithm in its formulas, or take more steps per day.");
    }
}

} // namespace orrery::engine
