#pragma once

#include "document/MyDocument.h"

#include <functional>

namespace orrery {

/// Runs a command that builds the document's plot. When it fails (a plot that is larger than the memory), the plot is
/// left empty and the reason shown in a sheet. No exception leaves.
void guardedPlot(MyDocument& document, const std::function<void()>& command);

} // namespace orrery
