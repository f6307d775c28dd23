#pragma once

#include "app/plot/ResponseVariableRow.h"
#include "app/widgets/InterfaceDescriptions.h"
#include "app/widgets/RowList.h"
#include "document/MyDocument.h"

#include <QObject>
#include <functional>

namespace orrery {

/// One row per response variable of the document, with a filter and buttons for all of them where there are many.
class ResponseSettings : public QObject, public SettingsRows {
    Q_OBJECT

public:
    ResponseSettings(MyDocument& document, Ui::MyDocument& ui);

    void reloadData() override;
    void setControlEnabled(std::size_t /*row*/, SettingsTag /*tag*/, bool /*enabled*/) override {} // all stay enabled
    [[nodiscard]] QWidget* controlOf(const Changed<ResponseChoice>& change);                       // that shows it

private:
    ResponseVariableRow* makeRow(std::size_t number);
    void change(std::size_t row, PlotAct act, const ResponseVariable::Value& value);
    void change(std::vector<ResponseVariable> records, PlotAct act, const ResponseVariable::Value& value);
    void chooseColor(std::size_t row);
    void includeListed(bool drawn);
    void showRows();
    void applyFilter();
    void fitHeight();

    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    RowList<ResponseVariableRow> m_rows;
};

} // namespace orrery
