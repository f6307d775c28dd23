#include "model/PortFaults.h"

#include "platform/values/Quoted.h"

#include <fmt/format.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace orrery {

namespace {

constexpr std::uint64_t emptyHash = 0xcbf29ce484222325U; // FNV-1a, which goes on from the hash of a beginning

std::uint64_t hashOn(std::uint64_t hash, std::string_view text) {
    for (const char byte : text) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return hash;
}

/// Takes "/" + name off the path's end.
bool takeName(std::string_view& path, std::string_view name) {
    if (!path.ends_with(name)) return false;
    path.remove_suffix(name.size());
    if (!path.ends_with('/')) return false;
    path.remove_suffix(1);
    return true;
}

/// Whether setups name the port so, from the top of the tree or by its owner alone.
bool isPathOf(std::string_view path, const ModelNode& port) {
    const bool fromTop = path.starts_with('/');
    const ModelNode* owner = port.parent->parent;
    if (!takeName(path, port.name())) return false;
    if (!fromTop) return path == owner->name();
    for (const ModelNode* node = owner; node != nullptr; node = node->parent) {
        if (!takeName(path, node->name())) return false;
    }
    return path.empty();
}

std::string noSuchPort(std::string_view portPath, PortDirection direction, std::string_view nearest) {
    const std::string words = fmt::format("The model has no {} port {}.",
                                          direction == PortDirection::Input ? "input" : "output", quoted(portPath));
    return nearest.empty() ? words : fmt::format("{} Did you mean {}?", words, quoted(nearest));
}

} // namespace

std::string noSuchPort(const ModelTree& tree, std::string_view portPath, PortDirection direction) {
    return noSuchPort(portPath, direction, nearestPortPath(tree, portPath, direction));
}

const ModelNode* PortFaults::port(std::string_view portPath, PortDirection direction) {
    if (!m_isIndexed) indexTree();
    const Index& ports = m_ports.at(static_cast<std::size_t>(direction));
    const auto found = ports.find(hashOn(emptyHash, portPath));
    if (found == ports.end()) return nullptr;
    return isPathOf(portPath, *found->second) ? found->second : findPort(m_tree, portPath, direction);
}

bool PortFaults::isFaulty(std::string_view portPath, PortDirection direction) {
    return portPath.empty() || (!m_tree.empty() && port(portPath, direction) == nullptr);
}

const PortFault& PortFaults::fault(std::string_view portPath, PortDirection direction) {
    static const PortFault none;
    static const PortFault noPort{"No port is chosen: drag one here from the model.", {}};
    if (!isFaulty(portPath, direction)) return none;
    if (portPath.empty()) return noPort;
    const std::pair key(direction, std::string(portPath));
    if (const auto known = m_known.find(key); known != m_known.end()) return known->second;
    const std::string nearest = nearestPortPath(m_tree, portPath, direction);
    return m_known.emplace(key, PortFault{noSuchPort(portPath, direction, nearest), nearest}).first->second;
}

void PortFaults::forget() {
    m_isIndexed = false;
    m_ports = {};
    m_known.clear();
}

void PortFaults::indexTree() {
    m_isIndexed = true;
    std::vector<std::pair<const ModelNode*, std::uint64_t>> waiting; // with the hash of the owner's path
    for (const ModelNode* top : treeTops(m_tree)) {
        waiting.emplace_back(top, emptyHash);
    }
    while (!waiting.empty()) {
        const auto [node, ownerHash] = waiting.back();
        waiting.pop_back();
        if (node->kind == ModelNodeKind::Port) indexPort(*node, ownerHash);
        const bool isGroup = node->kind == ModelNodeKind::PortGroup;
        const std::uint64_t hash = isGroup ? ownerHash : hashOn(hashOn(ownerHash, "/"), node->name());
        for (const ModelNode* child : node->children) {
            waiting.emplace_back(child, hash);
        }
    }
}

void PortFaults::indexPort(const ModelNode& port, std::uint64_t ownerHash) {
    const std::optional<PortReference> reference = portReference(port);
    if (!reference) return;
    Index& ports = m_ports.at(static_cast<std::size_t>(reference->direction));
    const std::uint64_t byOwner = hashOn(emptyHash, port.parent->parent->name());
    for (const std::uint64_t owner : {ownerHash, byOwner}) {
        ports.emplace(hashOn(hashOn(owner, "/"), port.name()), &port);
    }
}

} // namespace orrery
