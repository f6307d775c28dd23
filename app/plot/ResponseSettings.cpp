#include "app/plot/ResponseSettings.h"

#include "app/widgets/GuardedPlot.h"
#include "app/widgets/QtColor.h"
#include "app/widgets/UndoPassThrough.h"
#include "platform/qt/QtText.h"
#include "ui_MyDocument.h"

#include <QColorDialog>
#include <algorithm>

namespace orrery {

namespace {

constexpr std::size_t manyRows = 12; // more scroll by themselves

} // namespace

ResponseSettings::ResponseSettings(MyDocument& document, Ui::MyDocument& ui)
    : m_document(document), m_ui(ui),
      m_rows(ui.dependentVariableLayout, [this](std::size_t number) { return makeRow(number); }) {
    letUndoPassThrough(*ui.responseFilter);
    connect(ui.responseFilter, &QLineEdit::textChanged, this, [this] { applyFilter(); });
    connect(ui.responsesAll, &QToolButton::clicked, this, [this] { includeListed(true); });
    connect(ui.responsesNone, &QToolButton::clicked, this, [this] { includeListed(false); });
}

ResponseVariableRow* ResponseSettings::makeRow(std::size_t number) {
    auto* row = new ResponseVariableRow(number, m_ui.dependentVariableSettings);
    connect(row, &ResponseVariableRow::included, this,
            [this, number](bool drawn) { change(number, PlotAct::ChooseResponses, drawn); });
    connect(row, &ResponseVariableRow::scaleTyped, this,
            [this, number](float scale) { change(number, PlotAct::TypeScale, scale); });
    connect(row, &ResponseVariableRow::colorAsked, this, [this, number] { chooseColor(number); });
    return row;
}

void ResponseSettings::reloadData() {
    m_rows.resize(m_document.results().responses.variables.size());
    showRows();
    m_ui.responseTools->setVisible(m_rows.size() > 0);
    m_ui.responsesAll->setVisible(m_rows.size() > 1);
    m_ui.responsesNone->setVisible(m_rows.size() > 1);
    m_ui.responseFilter->setVisible(m_rows.size() > manyRows);
    if (m_rows.size() <= manyRows) m_ui.responseFilter->clear();
    applyFilter();
    fitHeight();
}

void ResponseSettings::change(std::size_t row, PlotAct act, const ResponseVariable::Value& value) {
    change(std::vector{m_document.results().responses.variables[row]}, act, value);
}

void ResponseSettings::change(std::vector<ResponseVariable> records, PlotAct act,
                              const ResponseVariable::Value& value) {
    guardedPlot(m_document, [&] { m_document.plot().changeResponses(std::move(records), act, value); });
    showRows(); // others may share a record
}

void ResponseSettings::chooseColor(std::size_t row) {
    const ResponseVariable record = m_document.results().responses.variables[row];
    auto* dialog = new QColorDialog(qtColor(record.color()), m_rows[row].window());
    dialog->setObjectName("colorDialog");
    dialog->setWindowTitle(tr("Colour of %1").arg(qtText(record.name())));
    dialog->setOption(QColorDialog::DontUseNativeDialog);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QColorDialog::colorSelected, this,
            [this, record](const QColor& chosen) { change({record}, PlotAct::ChooseColor, coreColor(chosen)); });
    dialog->open();
}

void ResponseSettings::includeListed(bool drawn) {
    std::vector<ResponseVariable> listed;
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        if (!m_rows[row].isHidden()) listed.push_back(m_document.results().responses.variables[row]);
    }
    change(std::move(listed), PlotAct::ChooseResponses, drawn);
}

/// A row that the filter hides comes out.
QWidget* ResponseSettings::controlOf(const Changed<ResponseChoice>& change) {
    if (change.row >= m_rows.size()) return nullptr;
    ResponseVariableRow& row = m_rows[change.row];
    if (row.isHidden()) m_ui.responseFilter->clear();
    return &row.control(change.before.scale != change.after.scale   ? PlotAct::TypeScale
                        : change.before.color != change.after.color ? PlotAct::ChooseColor
                                                                    : PlotAct::ChooseResponses);
}

void ResponseSettings::showRows() {
    const auto& variables = m_document.results().responses.variables;
    for (std::size_t row = 0; row < std::min(m_rows.size(), variables.size()); ++row) {
        m_rows[row].showVariable(variables[row]);
    }
}

void ResponseSettings::applyFilter() {
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        m_rows[row].setVisible(m_rows[row].accessibleName().contains(m_ui.responseFilter->text(), Qt::CaseInsensitive));
    }
}

/// As high as the rows are, up to a number of rows that leaves the rest of the column in sight.
void ResponseSettings::fitHeight() {
    const auto shown = static_cast<int>(std::min(m_rows.size(), manyRows));
    const int rowHeight = m_rows.size() == 0 ? 0 : m_rows[0].sizeHint().height();
    m_ui.responseScroll->setFixedHeight(shown * (rowHeight + m_ui.dependentVariableLayout->spacing()));
    m_ui.responseScroll->setVisible(shown > 0);
}

} // namespace orrery
