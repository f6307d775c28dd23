#include "app/setup/ShowPlace.h"

#include "app/setup/PortTableView.h"
#include "platform/qt/QtText.h"
#include "ui_MyDocument.h"

#include <array>

namespace orrery {

namespace {

struct Control {
    std::string_view key;
    QWidget* widget;
};

QWidget* controlOf(const Ui::MyDocument& ui, std::string_view key) {
    const std::array controls = {Control{setup_key::modelPath, ui.selectModel}, // what is done about it
                                 Control{setup_key::outputs, ui.outputTable},
                                 Control{setup_key::initializations, ui.inputTable},
                                 Control{setup_key::steppers, ui.stepperTable}};
    for (const Control& control : controls) {
        if (control.key == key) return control.widget;
    }
    return ui.setupTab->findChild<QWidget*>(qtText(key)); // a setting's
}

} // namespace

void showPlace(Ui::MyDocument& ui, const SetupPlace& place) {
    QWidget* control = controlOf(ui, place.key);
    if (control == nullptr) return;
    ui.tabView->setCurrentWidget(ui.setupTab);
    control->setFocus(Qt::ShortcutFocusReason); // selects a field's text
    auto* table = qobject_cast<PortTableView*>(control);
    if (table != nullptr && place.row) table->showCell(*place.row, place.field);
}

} // namespace orrery
