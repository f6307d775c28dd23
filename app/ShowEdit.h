#pragma once

#include "app/InterfaceDescriptions.h"
#include "document/MyDocument.h"

class QWidget;

namespace orrery {

class PlotTab;

/// Brings what was undone or redone to view: its tab is chosen, its rows are selected or its control is focused.
void showEdit(MyDocument& document, Ui::MyDocument& ui, PlotTab& plotTab, const EditPlace& place);

/// Has all that scrolls around the control show it, and gives it the keyboard if wanted.
void bringToView(QWidget& control, bool withKeyboard);

} // namespace orrery
