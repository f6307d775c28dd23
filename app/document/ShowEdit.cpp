#include "app/document/ShowEdit.h"

#include "app/plot/PlotTab.h"
#include "app/setup/PortTableView.h"
#include "app/setup/ShowPlace.h"
#include "ui_MyDocument.h"

namespace orrery {

void showEdit(MyDocument& document, Ui::MyDocument& ui, PlotTab& plotTab, const EditPlace& place) {
    if (place.setup.key.empty()) {
        plotTab.showChange(place.plot);
        return;
    }
    showPlace(ui, place.setup);
    if (place.rows.size() < 2) return;
    for (PortTableView* table : {ui.outputTable, ui.inputTable, ui.stepperTable}) {
        if (listKey(table->portList()) != place.setup.key) continue;
        document.controller(table->portList()).setSelection(place.rows);
        table->selectRows(place.rows);
    }
}

} // namespace orrery
