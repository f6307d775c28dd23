#include "engine/PortValues.h"

#include "engine/LookupTable.h"
#include "engine/PartClass.h"
#include "platform/values/Quoted.h"

#include <algorithm>
#include <limits>

namespace orrery::engine {

namespace {

constexpr std::size_t clockValues = 3; // time, day, step
constexpr double mostStages = 1000;

/// The part's number of stages, 3 unless it says otherwise.
std::size_t stageCountOf(const PortNetwork& network, const NetworkPart& part) {
    if (partClass(part) != PartClass::Delay) {
        return 0;
    }
    const std::string_view text = part.attribute("stages");
    if (text.empty()) {
        return 3;
    }
    const double count = numberIn(text, network.placeOf(part), partLabel(part, "stages"));
    if (count >= 1 && count <= mostStages) {
        return static_cast<std::size_t>(count);
    }
    throw OrreryError(partLabel(part, "stages") + ": a delay has from 1 to 1000 stages.", network.placeOf(part),
                      "Write such a number.");
}

/// A splitter passes its input on by its nature; of other parts the user should know it.
bool shouldCompute(const NetworkPart& part) {
    return partClass(part) != PartClass::Level && part.className() != "KSINPUTSPLITTER";
}

} // namespace

PortValues::PortValues(const PortNetwork& network, const std::set<std::size_t>& setPorts)
    : m_network(network), m_fixed(network.ports().size()) {
    grow(clockValues);
    placePorts(setPorts);
    placeFixedValues(setPorts);
    placeStages();
    readDefaults(setPorts);
    m_defaults = m_values;
}

void PortValues::reset() {
    // The clock's step is the run's and stays.
    std::ranges::copy(m_defaults.begin() + clockValues, m_defaults.end(), m_values.begin() + clockValues);
}

double* PortValues::fixed(std::size_t port) {
    return m_fixed[port] ? &m_values[*m_fixed[port]] : nullptr;
}

std::span<double> PortValues::stages(std::size_t part) {
    return std::span(m_values).subspan(m_firstStage[part], m_stageCount[part]);
}

Variables PortValues::variablesOf(const NetworkPart& part) {
    Variables variables{{"time", &time()}, {"day", &day()}, {"dt", &stepDays()}};
    std::set<std::string> taken;
    for (const auto* ports : {&part.inputs, &part.outputs}) {
        for (const std::size_t port : *ports) {
            const std::string name = variableName(m_network.ports()[port].name());
            if (!taken.insert(name).second) {
                throw OrreryError(partLabel(part) + " has two ports that formulas call " + quoted(name) + ".",
                                  m_network.placeOf(part), "Rename one of them.");
            }
            variables[name] = at(port);
        }
    }
    return variables;
}

/// The port whose value this one shares, if it has none of its own.
std::optional<std::size_t> PortValues::passedFrom(std::size_t index, const std::set<std::size_t>& setPorts) const {
    const NetworkPort& port = m_network.ports()[index];
    const NetworkPart& part = m_network.parts()[port.part];
    if (port.direction == PortDirection::Input) {
        return setPorts.contains(index) ? std::nullopt : port.source;
    }
    if (partClass(part) == PartClass::Level) {
        return port.source;
    }
    if (isComputed(part, port) || part.inputs.empty()) {
        return std::nullopt;
    }
    const auto position = static_cast<std::size_t>(std::ranges::find(part.outputs, index) - part.outputs.begin());
    return part.inputs[std::min(position, part.inputs.size() - 1)];
}

std::size_t PortValues::representative(std::size_t port, const std::set<std::size_t>& setPorts) const {
    std::size_t present = port;
    for (std::size_t passed = 0; passed <= m_network.ports().size(); ++passed) {
        const std::optional<std::size_t> next = passedFrom(present, setPorts);
        if (!next) {
            return present;
        }
        present = *next;
    }
    const NetworkPort& culprit = m_network.ports()[present];
    throw OrreryError("Algebraic cycle: " + portLabel(culprit) + " passes its own value on to itself.",
                      m_network.placeOf(culprit), "Remove one of its connections.");
}

std::size_t PortValues::grow(std::size_t count, double value) {
    const std::size_t first = m_values.size();
    m_values.resize(first + count, value);
    return first;
}

void PortValues::placePorts(const std::set<std::size_t>& setPorts) {
    constexpr std::size_t none = 0; // the clock's place, so no port's
    m_place.assign(m_network.ports().size(), none);
    for (std::size_t port = 0; port < m_place.size(); ++port) {
        const std::size_t owner = representative(port, setPorts);
        if (m_place[owner] == none) {
            m_place[owner] = grow(1);
        }
        m_place[port] = m_place[owner];
    }
}

void PortValues::placeFixedValues(const std::set<std::size_t>& setPorts) {
    for (const std::size_t port : setPorts) {
        if (m_network.ports()[port].source) {
            m_fixed[port] = grow(1, std::numeric_limits<double>::quiet_NaN());
        }
    }
}

void PortValues::placeStages() {
    for (const NetworkPart& part : m_network.parts()) {
        m_stageCount.push_back(stageCountOf(m_network, part));
        m_firstStage.push_back(grow(m_stageCount.back()));
    }
}

void PortValues::readDefaults(const std::set<std::size_t>& setPorts) {
    for (std::size_t index = 0; index < m_network.ports().size(); ++index) {
        const NetworkPort& port = m_network.ports()[index];
        const NetworkPart& part = m_network.parts()[port.part];
        const bool input = port.direction == PortDirection::Input;
        if (!input && shouldCompute(part) && !isComputed(part, port)) {
            m_passingOutputs.push_back(index);
        }
        if (!input || port.source) {
            continue;
        }
        const std::string_view text = port.attribute("default");
        if (!text.empty()) {
            *at(index) = numberIn(text, m_network.placeOf(port), portLabel(port, "default"));
        } else if (!setPorts.contains(index)) {
            m_emptyInputs.push_back(index);
        }
    }
}

} // namespace orrery::engine
