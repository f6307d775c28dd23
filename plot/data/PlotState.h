#pragma once

#include "plot/data/Camera.h"
#include "run/IndependentVariable.h"
#include "run/ResponseVariable.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What a user chooses on the plot tab, as values: to be compared, kept and put back.
namespace orrery {

/// The choice for one sweep variable.
struct AxisChoice {
    std::string name; // of the variable that it was made for
    PlotRole function = PlotRole::Held;
    float constant = 0;
    friend bool operator==(const AxisChoice&, const AxisChoice&) = default;
};

/// The choice for one response variable.
struct ResponseChoice {
    std::string name;
    bool includep = false;
    float scale = 1;
    Color color;
    friend bool operator==(const ResponseChoice&, const ResponseChoice&) = default;
};

/// Where the scene is seen from, and how it is lit.
struct CameraChoice {
    Vector3 viewPos;
    Vector3 viewDir;
    float lightHeight = 0;
    friend bool operator==(const CameraChoice&, const CameraChoice&) = default;
};

/// How far the scene is turned, as the view and as the slider count it.
struct RotationChoice {
    float angle = 0;
    float sliderValue = 0;
    friend bool operator==(const RotationChoice&, const RotationChoice&) = default;
};

struct PlotState {
    std::vector<AxisChoice> variables;     // one per sweep variable
    std::vector<ResponseChoice> responses; // one per response variable
    CameraChoice camera;
    RotationChoice rotation;
    friend bool operator==(const PlotState&, const PlotState&) = default;
};

/// A choice before and after something changed it.
template <typename Choice>
struct Changed {
    Choice before;
    Choice after;
    std::size_t row = 0; // in the list of its kind, if there is one
};

/// What differs between two states of the same results.
struct PlotChange {
    std::vector<Changed<AxisChoice>> variables;
    std::vector<Changed<ResponseChoice>> responses;
    std::optional<Changed<CameraChoice>> camera;
    std::optional<Changed<RotationChoice>> rotation;

    [[nodiscard]] bool empty() const;
    /// Whether it is of the results' variables and not of the view alone.
    [[nodiscard]] bool ofResults() const { return !variables.empty() || !responses.empty(); }
    /// Takes a change that came after this one into it.
    void append(const PlotChange& later);
    [[nodiscard]] PlotChange reversed() const;
    /// Whether the variables that it changes are there, at their places.
    [[nodiscard]] bool appliesTo(const std::vector<IndependentVariable>& present,
                                 const std::vector<ResponseVariable>& presentResponses) const;
};

[[nodiscard]] PlotChange difference(const PlotState& before, const PlotState& after);

/// Gives the variables what the change leads to, where it applies to them; an axis that a variable gets is lost by the
/// one that had it.
void makeChange(const PlotChange& change, std::vector<IndependentVariable>& variables,
                std::vector<ResponseVariable>& responses);

/// The camera that the change leads to from the present one.
[[nodiscard]] CameraChoice changed(CameraChoice present, const Changed<CameraChoice>& change);

} // namespace orrery
