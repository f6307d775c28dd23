#include "engine/PortNetwork.h"

#include "model/PortFaults.h"
#include "platform/values/Quoted.h"
#include "run/ResponseVariables.h"

#include <utility>

namespace orrery::engine {

PortNetwork::PortNetwork(const std::string& modelPath) : m_modelPath(modelPath) {
    std::vector<ModelRecord> records = readModelFile(modelPath);
    const Origins origins = originsOf(records);
    m_tree = nodesFromDictionaries(std::move(records), modelPath);
    if (m_tree.root() != nullptr) {
        addPart(*m_tree.root(), origins);
    }
    for (const ModelNode* node : m_tree.topLevel()) {
        addPart(*node, origins);
    } // those the root does not list
    for (NetworkPort& port : m_ports) {
        const auto origin = origins.find(std::string(port.attribute("id")));
        if (origin != origins.end()) {
            connect(port, origin->second.sources);
        }
    }
}

std::size_t PortNetwork::portAt(std::string_view portPath, PortDirection direction, const Place& place) const {
    const ModelNode* const node = findPort(m_tree, portPath, direction);
    if (node != nullptr) {
        return m_portOfNode.at(node);
    }
    throw OrreryError(noSuchPort(m_tree, portPath, direction), place,
                      "Correct the port path, or choose the model that has this port.");
}

std::vector<std::size_t> PortNetwork::recorders() const {
    std::vector<std::size_t> ports;
    for (const ResponseVariable& recorder : recordersOf(m_tree)) {
        ports.push_back(m_portOfIdentifier.at(recorder.identifier()));
    }
    return ports;
}

PortNetwork::Origins PortNetwork::originsOf(const std::vector<ModelRecord>& records) {
    Origins origins;
    for (const ModelRecord& record : records) {
        if (!record.identifier) {
            continue;
        }
        Origin& origin = origins[*record.identifier];
        origin.line = record.line;
        const std::vector<std::string>* const targets = record.targets("source");
        origin.sources = targets == nullptr ? std::vector<std::string>() : *targets;
        std::erase(origin.sources, std::string());
    }
    return origins;
}

void PortNetwork::addPart(const ModelNode& node, const Origins& origins) {
    if (!m_visited.insert(&node).second) {
        return;
    }
    NetworkPart part;
    part.node = &node;
    part.path = pathForNode(node);
    if (const auto origin = origins.find(std::string(part.attribute("id"))); origin != origins.end()) {
        part.line = origin->second.line;
    }
    m_parts.push_back(std::move(part));
    for (const ModelNode* child : node.children) {
        if (child->kind == ModelNodeKind::PortGroup) {
            addPorts(*child, origins);
        }
    }
    for (const ModelNode* child : node.children) {
        if (child->kind == ModelNodeKind::Part || child->kind == ModelNodeKind::Level) {
            addPart(*child, origins);
        }
    }
}

void PortNetwork::addPorts(const ModelNode& group, const Origins& origins) {
    NetworkPart& part = m_parts.back();
    for (const ModelNode* node : group.children) {
        const std::optional<PortReference> reference = portReference(*node);
        if (!reference) {
            continue;
        }
        NetworkPort port;
        port.node = node;
        port.path = reference->path;
        port.part = m_parts.size() - 1;
        port.direction = reference->direction;
        if (const auto origin = origins.find(std::string(port.attribute("id"))); origin != origins.end()) {
            port.line = origin->second.line;
        }
        auto& ports = port.direction == PortDirection::Input ? part.inputs : part.outputs;
        ports.push_back(m_ports.size());
        m_portOfNode[node] = m_ports.size();
        m_portOfIdentifier[port.attribute("id")] = m_ports.size();
        m_ports.push_back(std::move(port));
    }
}

void PortNetwork::connect(NetworkPort& port, const std::vector<std::string>& sources) {
    if (sources.empty()) {
        return;
    }
    if (sources.size() > 1) {
        throw OrreryError("Port " + quoted(port.path) + " has " + std::to_string(sources.size()) + " sources.",
                          placeOf(port), "Name one, or add the values up in an expression.");
    }
    const auto source = m_portOfIdentifier.find(sources.front());
    if (source == m_portOfIdentifier.end()) {
        throw OrreryError("The source " + quoted(sources.front()) + " of port " + quoted(port.path) +
                              " is not a port of the model.",
                          placeOf(port), "Name the identifier of a port.");
    }
    port.source = source->second;
}

} // namespace orrery::engine
