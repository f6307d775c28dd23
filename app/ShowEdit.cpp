#include "app/ShowEdit.h"

#include "app/PlotTab.h"
#include "app/PortTableView.h"
#include "app/ShowPlace.h"
#include "platform/qt/Later.h"
#include "ui_MyDocument.h"

#include <QScrollArea>

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

/// The scrolling waits until a tab that has just come to the front has its layout.
void bringToView(QWidget& control, bool withKeyboard) {
    if (withKeyboard) control.setFocus(Qt::ShortcutFocusReason); // selects a field's text
    later(control, [control = &control] {
        for (QWidget* around = control->parentWidget(); around != nullptr; around = around->parentWidget()) {
            if (auto* area = qobject_cast<QScrollArea*>(around)) area->ensureWidgetVisible(control);
        }
    });
}

} // namespace orrery
