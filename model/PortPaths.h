#pragma once

#include "model/ModelTree.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// The tops of all that an outline shows: what a path can begin with.
[[nodiscard]] std::vector<const ModelNode*> treeTops(const ModelTree& tree);

/// The names of the node's ancestors and its own, from the top of the tree, joined by "/". The root level comes first.
[[nodiscard]] std::string pathForNode(const ModelNode& node);

/// Which way a port faces, as its group says.
enum class PortDirection { Input, Output };

struct PortReference {
    std::string path; // "/" + path of the owning part + "/" + the port's name
    PortDirection direction = PortDirection::Input;
};

/// std::nullopt when the node is not a port in an "inputs" or "outputs" group.
[[nodiscard]] std::optional<PortDirection> portDirection(const ModelNode& node);

/// How setups name a port; std::nullopt when the node is not a port in an "inputs" or "outputs" group.
[[nodiscard]] std::optional<PortReference> portReference(const ModelNode& node);

/// The port of that path, found by name from the root down; nullptr when there is none. A path without the leading
/// "/" (part name, "/", port name, as old setups have it) names a port of a part of that name anywhere in the tree.
[[nodiscard]] const ModelNode* findPort(const ModelTree& tree, std::string_view portPath, PortDirection direction);

/// The known port path nearest to a wrong one, for "did you mean"; empty when nothing is near.
[[nodiscard]] std::string nearestPortPath(const ModelTree& tree, std::string_view portPath, PortDirection direction);

} // namespace orrery
