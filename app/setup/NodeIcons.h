#pragma once

#include "model/ModelTree.h"
#include "model/PortPaths.h"

#include <QIcon>

namespace orrery {

/// A small picture of what the node is: shapes differ by kind, and a part has its class's letter. Drawn in the
/// palette's colours at whatever size is asked for.
[[nodiscard]] const QIcon& nodeIcon(const ModelNode& node);
[[nodiscard]] const QIcon& portIcon(PortDirection direction);
/// Something is wrong here.
[[nodiscard]] const QIcon& warningIcon();

} // namespace orrery
