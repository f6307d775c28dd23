#pragma once

#include "platform/Outlets.h"
#include "plot/data/PlotView.h"

namespace orrery {

/// The window's parts that a document speaks to. Each may be absent; none is owned.
struct DocumentOutlets {
    ListView* outlineView = nullptr; // the model tree
    ListView* outputTable = nullptr;
    ListView* inputTable = nullptr; // the initializations
    ListView* stepperTable = nullptr;
    SettingsRows* independentVariableSettings = nullptr; // one row per sweep variable
    SettingsRows* dependentVariableSettings = nullptr;   // one row per response variable
    StatusView* statusView = nullptr;
    ProgressWheel* progressWheel = nullptr;
    TwoStateButton* startStopButton = nullptr;
    Slider* yRotationSlider = nullptr;
    PlotView* glView = nullptr;
    Alerts* alerts = nullptr;
    OpenPanel* openPanel = nullptr;
    WaitPanel* waitPanel = nullptr;
};

} // namespace orrery
