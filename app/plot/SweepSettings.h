#pragma once

#include "app/plot/SweepVariableRow.h"
#include "app/widgets/RowList.h"
#include "document/MyDocument.h"

#include <QLabel>
#include <QObject>

namespace orrery {

/// One row per sweep variable of the document, or a word of why there is none.
class SweepSettings : public QObject, public SettingsRows {
    Q_OBJECT

public:
    SweepSettings(MyDocument& document, QWidget& place);

    void reloadData() override;
    void setControlEnabled(std::size_t row, SettingsTag tag, bool enabled) override;
    [[nodiscard]] QWidget* controlOf(const Changed<AxisChoice>& change) const; // that shows it

private:
    SweepVariableRow* makeRow(std::size_t number);
    void chooseRole(std::size_t row, PlotRole role);
    void hold(std::size_t row, PlotAct act, float constant);
    void showRows();

    MyDocument& m_document;
    QWidget& m_place;
    QLabel* m_empty; // instead of rows
    RowList<SweepVariableRow> m_rows;
};

/// What a person reads where results would be.
[[nodiscard]] QString noResultsText(MyDocument& document);

} // namespace orrery
