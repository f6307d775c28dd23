#pragma once

#include "run/RunControl.h"

#include <QIcon>
#include <QString>

class QStyle;

namespace orrery {

/// The state of a document's run in a few words: waiting, running, or how the last one ended.
[[nodiscard]] QString runStateText(const RunControl& run);

/// A mark for the same, told apart by its shape; none before the first run.
[[nodiscard]] QIcon runStateIcon(const RunControl& run, const QStyle& style);

} // namespace orrery
