#pragma once

#include "engine/Expression.h"
#include "engine/PortNetwork.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace orrery::engine {

/// The values of a run's ports and stages, in one block that can be copied out and in: what makes up one cell's state.
///
/// Ports that pass another's value on share its place. Places stay valid as long as this object.
class PortValues {
public:
    /// @param setPorts the input ports whose value the setup gives
    /// @throws OrreryError when ports feed each other in a circle
    PortValues(const PortNetwork& network, const std::set<std::size_t>& setPorts);
    PortValues(const PortValues&) = delete;
    PortValues& operator=(const PortValues&) = delete;

    [[nodiscard]] std::span<double> all() { return m_values; }
    /// Every port at its default, every stage empty, no port fixed.
    void reset();
    [[nodiscard]] double* at(std::size_t port) { return &m_values[m_place[port]]; }
    [[nodiscard]] double at(std::size_t port) const { return m_values[m_place[port]]; }
    /// Where the setup's value of a port with a source stands, NaN when it gives none; nullptr for other ports.
    [[nodiscard]] double* fixed(std::size_t port);
    /// Sets an input port from the setup.
    void set(std::size_t port, double value) {
        double* const given = fixed(port);
        (given == nullptr ? *at(port) : *given) = value;
    }
    [[nodiscard]] std::span<double> stages(std::size_t part);

    double& time() { return m_values[0]; }
    double& day() { return m_values[1]; }
    double& stepDays() { return m_values[2]; }

    /// What the formulas of a part may name. @throws OrreryError when two ports have one name there
    [[nodiscard]] Variables variablesOf(const NetworkPart& part);

    /// Outputs without a rule of their own, and inputs that nothing gives a value, for a note to the user.
    [[nodiscard]] const std::vector<std::size_t>& passingOutputs() const { return m_passingOutputs; }
    [[nodiscard]] const std::vector<std::size_t>& emptyInputs() const { return m_emptyInputs; }

private:
    [[nodiscard]] std::optional<std::size_t> passedFrom(std::size_t port, const std::set<std::size_t>& setPorts) const;
    [[nodiscard]] std::size_t representative(std::size_t port, const std::set<std::size_t>& setPorts) const;
    std::size_t grow(std::size_t count, double value = 0);
    void placePorts(const std::set<std::size_t>& setPorts);
    void placeFixedValues(const std::set<std::size_t>& setPorts);
    void placeStages();
    void readDefaults(const std::set<std::size_t>& setPorts);

    const PortNetwork& m_network;
    std::vector<double> m_values;
    std::vector<double> m_defaults;
    std::vector<std::size_t> m_place;                // per port
    std::vector<std::optional<std::size_t>> m_fixed; // per port
    std::vector<std::size_t> m_firstStage;           // per part
    std::vector<std::size_t> m_stageCount;           // per part
    std::vector<std::size_t> m_passingOutputs;
    std::vector<std::size_t> m_emptyInputs;
};

} // namespace orrery::engine
