#include "model/PortPaths.h"

#include "platform/values/EditDistance.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orrery {

namespace {

constexpr std::size_t longestSuggestion = 256; // nobody needs a suggestion for a longer path

std::string_view groupName(PortDirection direction) {
    return direction == PortDirection::Input ? "inputs" : "outputs";
}

const ModelNode* groupOf(const ModelNode& owner, PortDirection direction) {
    for (auto child = owner.children.rbegin(); child != owner.children.rend(); ++child) { // groups come last
        if ((*child)->kind != ModelNodeKind::PortGroup) break;
        if ((*child)->name() == groupName(direction)) return *child;
    }
    return nullptr;
}

const ModelNode* portNamed(const ModelNode& owner, PortDirection direction, std::string_view name) {
    if (const ModelNode* group = groupOf(owner, direction)) {
        for (const ModelNode* port : group->children) {
            if (port->name() == name) return port;
        }
    }
    return nullptr;
}

/// What is left of the path after the node's name and a slash; std::nullopt when it does not begin so. A name may
/// hold slashes itself.
std::optional<std::string_view> afterName(std::string_view path, const ModelNode& node) {
    const std::string_view name = node.name();
    if (!path.starts_with(name) || path.size() == name.size() || path[name.size()] != '/') return std::nullopt;
    return path.substr(name.size() + 1);
}

/// A node and the part of the path that is still to be found below it.
using Step = std::pair<const ModelNode*, std::string_view>;

const ModelNode* findFromTop(const ModelTree& tree, std::string_view path, PortDirection direction) {
    std::vector<Step> steps;
    const auto push = [&steps](const std::vector<const ModelNode*>& nodes, std::string_view rest) {
        for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
            steps.emplace_back(*node, rest);
        }
    };
    push(treeTops(tree), path);
    while (!steps.empty()) {
        const auto [node, toFind] = steps.back();
        steps.pop_back();
        const std::optional<std::string_view> rest = afterName(toFind, *node);
        if (!rest) continue;
        if (const ModelNode* port = portNamed(*node, direction, *rest)) return port;
        push({node->children.begin(), node->children.end()}, *rest);
    }
    return nullptr;
}

/// Calls `visit` for each shown node in tree order until it returns false.
void visitNodes(const ModelTree& tree, const std::function<bool(const ModelNode&)>& visit) {
    std::vector<const ModelNode*> waiting = treeTops(tree);
    std::reverse(waiting.begin(), waiting.end());
    while (!waiting.empty()) {
        const ModelNode* node = waiting.back();
        waiting.pop_back();
        if (!visit(*node)) return;
        waiting.insert(waiting.end(), node->children.rbegin(), node->children.rend());
    }
}

const ModelNode* findAnywhere(const ModelTree& tree, std::string_view path, PortDirection direction) {
    const ModelNode* found = nullptr;
    visitNodes(tree, [&](const ModelNode& node) {
        const std::optional<std::string_view> rest = afterName(path, node);
        if (rest) found = portNamed(node, direction, *rest);
        return found == nullptr;
    });
    return found;
}

/// Keeps the nearest of the ports offered to it. The port's own name must nearly fit; then the whole path counts.
class NearestPort {
public:
    explicit NearestPort(std::string_view wanted)
        : m_name(wanted.substr(wanted.rfind('/') + 1)), m_owner(wanted.substr(0, wanted.size() - m_name.size())),
          m_nameLimit(std::max<std::size_t>(1, m_name.size() * 2 / 5)) {}

    void offer(const ModelNode& port) {
        const std::size_t nameDistance = editDistance(m_name, port.name(), std::min(m_nameLimit, m_best));
        if (nameDistance > m_nameLimit || nameDistance >= m_best) return;
        std::string path = portReference(port)->path;
        const std::string_view owner = std::string_view(path).substr(0, path.size() - port.name().size());
        const std::size_t distance = nameDistance + editDistance(m_owner, owner, m_best - nameDistance);
        if (distance < m_best) {
            m_best = distance;
            m_path = std::move(path);
        }
    }

    [[nodiscard]] std::string takePath() { return std::move(m_path); }

private:
    std::string_view m_name;
    std::string_view m_owner; // with the slashes around it
    std::size_t m_nameLimit;
    std::size_t m_best = longestSuggestion;
    std::string m_path;
};

} // namespace

std::vector<const ModelNode*> treeTops(const ModelTree& tree) {
    std::vector<const ModelNode*> found;
    std::unordered_set<const ModelNode*> seen;
    const auto add = [&](const ModelNode* node) {
        while (node->parent != nullptr) {
            node = node->parent;
        }
        if (seen.insert(node).second) found.push_back(node);
    };
    if (tree.root() != nullptr) add(tree.root());
    for (const ModelNode* node : tree.topLevel()) {
        add(node);
    }
    return found;
}

std::string pathForNode(const ModelNode& node) {
    std::vector<std::string_view> names;
    for (const ModelNode* each = &node; each != nullptr; each = each->parent) {
        names.push_back(each->name());
    }
    std::string path(names.back());
    for (auto name = names.rbegin() + 1; name != names.rend(); ++name) {
        path.append("/").append(*name);
    }
    return path;
}

std::optional<PortDirection> portDirection(const ModelNode& node) {
    const ModelNode* group = node.parent;
    if (group == nullptr || group->kind != ModelNodeKind::PortGroup || group->parent == nullptr) return std::nullopt;
    return group->name() == groupName(PortDirection::Input) ? PortDirection::Input : PortDirection::Output;
}

std::optional<PortReference> portReference(const ModelNode& node) {
    const std::optional<PortDirection> direction = portDirection(node);
    if (!direction) return std::nullopt;
    return PortReference{("/" + pathForNode(*node.parent->parent) + "/").append(node.name()), *direction};
}

const ModelNode* findPort(const ModelTree& tree, std::string_view portPath, PortDirection direction) {
    if (portPath.starts_with('/')) return findFromTop(tree, portPath.substr(1), direction);
    return findAnywhere(tree, portPath, direction);
}

std::string nearestPortPath(const ModelTree& tree, std::string_view portPath, PortDirection direction) {
    if (portPath.size() > longestSuggestion) return {};
    NearestPort nearest(portPath);
    visitNodes(tree, [&](const ModelNode& node) {
        if (node.kind == ModelNodeKind::PortGroup && node.name() == groupName(direction)) {
            for (const ModelNode* port : node.children) {
                nearest.offer(*port);
            }
        }
        return true;
    });
    return nearest.takePath();
}

} // namespace orrery
