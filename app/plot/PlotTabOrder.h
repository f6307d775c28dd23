#pragma once

#include "app/widgets/InterfaceDescriptions.h"

namespace orrery {

/// Has Tab go through the plot tab from the plot to its variables, its responses and its camera, and then to the strip
/// below the plot. Rows come late, and Qt puts what is made late behind everything else in the window.
void orderPlotTab(const Ui::MyDocument& ui);

} // namespace orrery
