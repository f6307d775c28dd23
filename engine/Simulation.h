#pragma once

#include "engine/ModelProgram.h"
#include "engine/PortNetwork.h"
#include "engine/RunPlan.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace orrery::engine {

/// Computes a run row by row, for every cell of its grid, in the rows' order: for each combination of stepper values
/// begin(), then report() with rising day indices.
class Simulation {
public:
    /// @param watched the ports whose values the rows hold
    Simulation(const PortNetwork& network, const RunPlan& plan, std::vector<std::size_t> watched);

    /// Starts every cell with the combination's stepper values.
    void begin(std::uint32_t combination);
    /// Carries every cell on to the row of that day index.
    /// @param onStep called after each time step of a cell; what it throws passes through
    /// @return the watched values, those of all cells of a port together
    /// @throws OrreryError naming a port whose value is no longer a finite number
    std::span<const double> report(std::uint32_t dayIndex, const std::function<void()>& onStep);

    [[nodiscard]] std::vector<std::string> notes() const { return m_program.notes(); }

private:
    void startCell(std::size_t cell);
    void exchange(std::vector<double>& cell); // a run of one cell needs no exchange
    [[nodiscard]] Moment momentAt(std::uint64_t step, std::size_t cell) const;
    void gather(std::size_t cell, std::uint32_t dayIndex);

    const PortNetwork& m_network;
    const RunPlan& m_plan;
    std::vector<std::size_t> m_watched;
    ModelProgram m_program;
    std::vector<std::vector<double>> m_cells; // the state of each; empty when there is one
    std::vector<double> m_values;             // watched × cells
    std::uint32_t m_combination = 0;
    std::uint64_t m_step = 0;
};

} // namespace orrery::engine
