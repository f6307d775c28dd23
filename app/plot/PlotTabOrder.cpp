#include "app/plot/PlotTabOrder.h"

#include "ui_MyDocument.h"

#include <QVector>

namespace orrery {

namespace {

/// The controls inside, as they lie in their layouts: an item of a layout may be a widget with controls or one itself.
void appendControls(QWidget& widget, QVector<QWidget*>& controls);

void appendControls(QLayout& layout, QVector<QWidget*>& controls) {
    for (int number = 0; number < layout.count(); ++number) {
        QLayoutItem* item = layout.itemAt(number);
        if (item->widget() != nullptr) appendControls(*item->widget(), controls);
        if (item->layout() != nullptr) appendControls(*item->layout(), controls);
    }
}

void appendControls(QWidget& widget, QVector<QWidget*>& controls) {
    const bool isControl = (widget.focusPolicy() & Qt::TabFocus) != 0;
    if (isControl) controls.append(&widget);
    auto* area = qobject_cast<QScrollArea*>(&widget);
    if (area != nullptr && area->widget() != nullptr) return appendControls(*area->widget(), controls);
    if (widget.layout() != nullptr && !isControl) appendControls(*widget.layout(), controls);
}

} // namespace

void orderPlotTab(const Ui::MyDocument& ui) {
    QVector<QWidget*> controls;
    appendControls(*ui.glContainer, controls);
    appendControls(*ui.plotControls, controls);
    for (QWidget* below : {ui.plotNoticeRow, ui.plotStrip}) {
        appendControls(*below, controls);
    }
    for (qsizetype number = 1; number < controls.size(); ++number) {
        QWidget::setTabOrder(controls[number - 1], controls[number]);
    }
    if (!controls.isEmpty()) QWidget::setTabOrder(controls.last(), ui.startStopButton);
}

} // namespace orrery
