#pragma once

#include "model/ModelTree.h"

#include <QString>

namespace orrery {

/// What the user calls a node: "level", "expression", "input port".
[[nodiscard]] QString nodeKindWord(const ModelNode& node);

/// The node's name and kind, and all its other attributes as a small table.
[[nodiscard]] QString nodeToolTip(const ModelNode& node);

} // namespace orrery
