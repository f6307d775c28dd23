#pragma once

#include <cstddef>
#include <string_view>

namespace orrery {

/// What a person does on the plot tab, each a step of undo.
enum class PlotAct {
    ChooseAxis,
    MoveHeldValue,
    TypeHeldValue,
    ChooseResponses,
    TypeScale,
    ChooseColor,
    MoveCamera,
    MoveLight,
    Rotate,
    ResetCamera
};

/// As a menu says it: "Change Camera".
[[nodiscard]] std::string_view plotActName(PlotAct act);

/// Whether a control moves on and on while it is held, so that all of its way is one step.
[[nodiscard]] bool isMove(PlotAct act);

/// The key of the response's value that the act is about.
[[nodiscard]] std::string_view responseKey(PlotAct act);

/// The control that does it. Part: which of those that do the same, such as its row.
struct PlotControl {
    PlotAct act;
    std::size_t part = 0;
    friend bool operator==(const PlotControl&, const PlotControl&) = default;
};

} // namespace orrery
