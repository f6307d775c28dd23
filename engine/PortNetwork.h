#pragma once

#include "model/ModelTree.h"
#include "model/PortPaths.h"
#include "platform/values/OrreryError.h"
#include "platform/values/StringMap.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orrery::engine {

/// A port as the engine sees it. Ports and parts are named by their position in the network.
struct NetworkPort {
    const ModelNode* node = nullptr;
    std::string path; // the port path
    std::size_t part = 0;
    PortDirection direction = PortDirection::Input;
    std::optional<std::size_t> source; // the port whose value this one takes
    std::size_t line = 0;              // in the model file

    [[nodiscard]] std::string_view name() const { return node->name(); }
    [[nodiscard]] std::string_view attribute(std::string_view key) const { return node->record.text(key); }
};

/// A part or level and its ports, in the order of its port groups.
struct NetworkPart {
    const ModelNode* node = nullptr;
    std::string path; // node path
    std::vector<std::size_t> inputs;
    std::vector<std::size_t> outputs;
    std::size_t line = 0;

    [[nodiscard]] std::string_view className() const { return node->record.text("class"); }
    [[nodiscard]] std::string_view attribute(std::string_view key) const { return node->record.text(key); }
};

/// A model's ports and how they are connected. Owns the model tree.
class PortNetwork {
public:
    /// Reads the model file. @throws OrreryError naming the file and what is wrong in it
    explicit PortNetwork(const std::string& modelPath);

    [[nodiscard]] const std::vector<NetworkPort>& ports() const { return m_ports; }
    [[nodiscard]] const std::vector<NetworkPart>& parts() const { return m_parts; }
    [[nodiscard]] const std::string& modelPath() const { return m_modelPath; }

    /// The port that a setup names. @param place where it is named, for the message
    /// @throws OrreryError with the nearest port path when there is none
    [[nodiscard]] std::size_t portAt(std::string_view portPath, PortDirection direction, const Place& place) const;
    /// The recorded output ports, in the order of the result table's columns.
    [[nodiscard]] std::vector<std::size_t> recorders() const;

    [[nodiscard]] Place placeOf(const NetworkPort& port) const { return {m_modelPath, port.line, 0}; }
    [[nodiscard]] Place placeOf(const NetworkPart& part) const { return {m_modelPath, part.line, 0}; }

private:
    struct Origin { // what the tree does not keep of a record
        std::size_t line = 0;
        std::vector<std::string> sources;
    };
    using Origins = std::unordered_map<std::string, Origin>;

    static Origins originsOf(const std::vector<ModelRecord>& records);
    void addPart(const ModelNode& node, const Origins& origins);
    void addPorts(const ModelNode& group, const Origins& origins);
    void connect(NetworkPort& port, const std::vector<std::string>& sources);

    std::string m_modelPath;
    ModelTree m_tree;
    std::vector<NetworkPort> m_ports;
    std::vector<NetworkPart> m_parts;
    std::unordered_set<const ModelNode*> m_visited;
    std::unordered_map<const ModelNode*, std::size_t> m_portOfNode;
    std::unordered_map<std::string_view, std::size_t> m_portOfIdentifier;
};

} // namespace orrery::engine
