#include "plot/data/Camera.h"

#include <algorithm>
#include <cmath>

namespace orrery {

float circularStep(float oldValue, float newValue, float max) {
    const float step = newValue - oldValue;
    if (!(std::fabs(step) > 0.5F * max)) {
        return step;
    }
    return step < 0.0F ? (max - oldValue) + newValue : (newValue - max) - oldValue;
}

float wrappedRotation(float rotation, float max) {
    if (!(max > 0.0F) || rotation < max) {
        return rotation;
    }
    return rotation - std::truncf(rotation / max) * max;
}

DepthRange depthRange(float shapeSize, double eyeZ) {
    const double half = static_cast<double>(shapeSize) * 0.5;
    return {std::max(0.1, -eyeZ - half), 10.0 * std::max(1.0, half - eyeZ)};
}

} // namespace orrery
