#include "document/PlotAct.h"

namespace orrery {

std::string_view plotActName(PlotAct act) {
    switch (act) {
    case PlotAct::ChooseAxis:
        return "Change Axis";
    case PlotAct::MoveHeldValue:
    case PlotAct::TypeHeldValue:
        return "Change Held Value";
    case PlotAct::ChooseResponses:
        return "Change Responses";
    case PlotAct::TypeScale:
        return "Change Scale";
    case PlotAct::ChooseColor:
        return "Change Color";
    case PlotAct::MoveCamera:
        return "Change Camera";
    case PlotAct::MoveLight:
        return "Change Light";
    case PlotAct::Rotate:
        return "Change Rotation";
    case PlotAct::ResetCamera:
        return "Reset Camera";
    }
    return "Change Plot";
}

std::string_view responseKey(PlotAct act) {
    return act == PlotAct::TypeScale ? "scale" : act == PlotAct::ChooseColor ? "color" : "includep";
}

bool isMove(PlotAct act) {
    return act == PlotAct::MoveHeldValue || act == PlotAct::MoveCamera || act == PlotAct::MoveLight ||
           act == PlotAct::Rotate;
}

} // namespace orrery
