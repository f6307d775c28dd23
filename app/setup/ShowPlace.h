#pragma once

#include "app/widgets/InterfaceDescriptions.h"
#include "document/setup/SetupPlace.h"

namespace orrery {

/// Brings a place of the setup to view and gives it the keyboard: its tab is chosen, its row selected and its cell
/// made current and visible, or its field focused. A row that is not there any more: the table alone.
void showPlace(Ui::MyDocument& ui, const SetupPlace& place);

} // namespace orrery
