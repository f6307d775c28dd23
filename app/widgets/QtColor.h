#pragma once

#include "run/ResponseVariable.h"

#include <QColor>

namespace orrery {

inline QColor qtColor(const Color& color) {
    return QColor::fromRgbF(color.red, color.green, color.blue, color.alpha);
}

/// In the device's red, green and blue, whatever space it was chosen in.
inline Color coreColor(const QColor& chosen) {
    const QColor rgb = chosen.toRgb();
    return {static_cast<float>(rgb.redF()), static_cast<float>(rgb.greenF()), static_cast<float>(rgb.blueF()),
            static_cast<float>(rgb.alphaF())};
}

} // namespace orrery
