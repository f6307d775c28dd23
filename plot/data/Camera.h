#pragma once

#include <array>
#include <cstdint>

namespace orrery {

/// A point or direction in the scene.
struct Vector3 {
    double x = 0;
    double y = 0;
    double z = 0;
    friend bool operator==(const Vector3&, const Vector3&) = default;
};

/// The camera of a plot view: owned by the view, edited in place by the document's camera properties.
struct CameraRecord {
    Vector3 viewPos; // the eye
    Vector3 viewDir; // the point looked at
    Vector3 viewUp;
    Vector3 rotPoint;
    double aperture = 0;        // degrees
    std::int32_t viewWidth = 0; // viewport last applied, pixels
    std::int32_t viewHeight = 0;
};

/// Where a new camera and a new light stand, and where resetCamera puts them back.
inline constexpr Vector3 defaultViewPos{0, 1, 4};
inline constexpr Vector3 defaultViewDir{0, -2, -10};
inline constexpr float defaultLightHeight = 1;

/// The step between two values of a circular slider of length `max`, the short way round; single precision.
[[nodiscard]] float circularStep(float oldValue, float newValue, float max);

/// The rotation folded into a slider of length `max`: at or above it, the remainder; negative values as they are.
[[nodiscard]] float wrappedRotation(float rotation, float max);

/// Near and far plane of the projection for a scene of that size seen from the eye's z.
struct DepthRange {
    double near = 0;
    double far = 0;
};
[[nodiscard]] DepthRange depthRange(float shapeSize, double eyeZ);

} // namespace orrery
