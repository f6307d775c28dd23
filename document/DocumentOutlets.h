#pragma once

#include "platform/Outlets.h"
#include "plot/data/PlotView.h"

namespace orrery {

/// The window's parts that a document speaks to; none is owned. Those of a document without a window are silent, but it
/// has no plot to draw, tells its messages otherwise, and waits without a panel.
struct DocumentOutlets {
    ListView* outlineView = &silentOutlet(); // the model tree
    ListView* outputTable = &silentOutlet();
    ListView* inputTable = &silentOutlet(); // the initializations
    ListView* stepperTable = &silentOutlet();
    SettingsRows* independentVariableSettings = &silentOutlet(); // one row per sweep variable
    SettingsRows* dependentVariableSettings = &silentOutlet();   // one row per response variable
    StatusView* statusView = &silentOutlet();
    ProgressWheel* progressWheel = &silentOutlet();
    TwoStateButton* startStopButton = &silentOutlet();
    Slider* yRotationSlider = &silentOutlet();
    PlotView* glView = nullptr;
    Alerts* alerts = nullptr;
    OpenPanel* openPanel = &silentOutlet();
    WaitPanel* waitPanel = nullptr;
};

} // namespace orrery
