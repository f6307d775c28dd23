#pragma once

#include "app/widgets/InterfaceDescriptions.h"
#include "document/MyDocument.h"

namespace orrery {

class PlotTab;

/// Brings what was undone or redone to view: its tab is chosen, its rows are selected or its control is focused.
void showEdit(MyDocument& document, Ui::MyDocument& ui, PlotTab& plotTab, const EditPlace& place);

} // namespace orrery
