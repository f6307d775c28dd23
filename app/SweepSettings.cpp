#include "app/SweepSettings.h"

#include "app/PlotEdits.h"
#include "run/IndexSet.h"
#include "run/SweepVariables.h"

#include <QLayout>
#include <algorithm>
#include <cmath>

namespace orrery {

namespace {

constexpr int fieldTag = 1;
constexpr int sliderTag = 2;
constexpr int roleTag = 3;

/// The typed value, or the grid's own where that is meant: the text of a grid's value is shorter than the value.
float meantValue(const IndependentVariable& variable, float typed) {
    constexpr float rounding = 1e-4F; // of a step
    const float steps = std::round((typed - variable.start()) / variable.step());
    if (!(steps >= 0.0F) || !(steps < static_cast<float>(variable.stridesPerCycle()))) return typed;
    const auto index = static_cast<std::uint32_t>(steps);
    const float distance = std::abs(typed - valueAtIndex(variable, index));
    return distance <= rounding * std::abs(variable.step()) ? heldValueAt(variable, index) : typed;
}

} // namespace

QString noResultsText(MyDocument& document) {
    return document.runControl().state() == RunControl::State::Idle
               ? QObject::tr("Run the setup to see its results here.")
               : QObject::tr("The results come when the run has ended.");
}

SweepSettings::SweepSettings(MyDocument& document, QWidget& place)
    : m_document(document), m_place(place), m_empty(new QLabel(&place)),
      m_rows(place.layout(), [this](std::size_t number) { return makeRow(number); }) {
    m_empty->setObjectName("noSweepVariables");
    m_empty->setWordWrap(true);
    place.layout()->addWidget(m_empty);
}

SweepVariableRow* SweepSettings::makeRow(std::size_t number) {
    auto* row = new SweepVariableRow(number, &m_place);
    connect(row, &SweepVariableRow::roleChosen, this, [this, number](auto function) { chooseRole(number, function); });
    connect(row, &SweepVariableRow::heldIndexChosen, this, [this, number](std::uint32_t index) {
        hold(number, sliderTag, heldValueAt(m_document.independentVariables()[number], index));
    });
    connect(row, &SweepVariableRow::heldValueTyped, this, [this, number](float value) {
        hold(number, fieldTag, meantValue(m_document.independentVariables()[number], value));
    });
    return row;
}

void SweepSettings::reloadData() {
    m_rows.resize(m_document.independentVariables().size());
    m_empty->setText(noResultsText(m_document));
    m_empty->setVisible(m_rows.size() == 0);
    showRows();
}

void SweepSettings::setControlEnabled(std::size_t row, int tag, bool enabled) {
    if (row < m_rows.size()) m_rows[row].setControlEnabled(tag, enabled);
}

void SweepSettings::chooseRole(std::size_t row, std::uint32_t function) {
    changePlotGuarded(m_document, {PlotAct::ChooseAxis, row}, [&] {
        m_document.independentVariables()[row].setFunction(function);
        m_document.updatePlot({roleTag, row});
    });
    showRows(); // another variable may have lost its axis
}

void SweepSettings::hold(std::size_t row, int tag, float constant) {
    const PlotAct act = tag == sliderTag ? PlotAct::MoveHeldValue : PlotAct::TypeHeldValue;
    changePlotGuarded(m_document, {act, row}, [&] {
        m_document.independentVariables()[row].setConstant(constant);
        m_document.updatePlot({tag, row});
    });
    showRows();
}

QWidget* SweepSettings::controlOf(const Changed<AxisChoice>& change) const {
    if (change.row >= m_rows.size()) return nullptr;
    return &m_rows[change.row].control(change.before.function == change.after.function ? fieldTag : roleTag);
}

void SweepSettings::showRows() {
    const auto& variables = m_document.independentVariables();
    for (std::size_t row = 0; row < std::min(m_rows.size(), variables.size()); ++row) {
        m_rows[row].showVariable(variables[row]);
    }
}

} // namespace orrery
