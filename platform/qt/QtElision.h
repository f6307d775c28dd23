#pragma once

#include "platform/qt/QtText.h"
#include "platform/values/ElidedName.h"

namespace orrery {

/// The name as wide as there is room: its last part whole, and where there is none or no room for it, cut in the middle
/// as any text is.
template <typename Metrics>
[[nodiscard]] QString elidedName(const QString& name, const Metrics& metrics, int width) {
    const std::string shown = elidedName(
        coreText(name), [&](const std::string& text) { return metrics.horizontalAdvance(qtText(text)) <= width; });
    return shown.empty() && !name.isEmpty() ? metrics.elidedText(name, Qt::ElideMiddle, width) : qtText(shown);
}

} // namespace orrery
