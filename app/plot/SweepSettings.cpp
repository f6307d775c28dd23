#include "app/plot/SweepSettings.h"

#include "app/widgets/GuardedPlot.h"
#include "run/IndexSet.h"
#include "run/SweepVariables.h"

#include <QLayout>
#include <algorithm>
#include <cmath>

namespace orrery {

namespace {

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
    connect(row, &SweepVariableRow::roleChosen, this, [this, number](PlotRole role) { chooseRole(number, role); });
    connect(row, &SweepVariableRow::heldIndexChosen, this, [this, number](std::uint32_t index) {
        hold(number, PlotAct::MoveHeldValue, heldValueAt(m_document.results().grid.variables[number], index));
    });
    connect(row, &SweepVariableRow::heldValueTyped, this, [this, number](float value) {
        hold(number, PlotAct::TypeHeldValue, meantValue(m_document.results().grid.variables[number], value));
    });
    return row;
}

void SweepSettings::reloadData() {
    m_rows.resize(m_document.results().grid.variables.size());
    m_empty->setText(noResultsText(m_document));
    m_empty->setVisible(m_rows.size() == 0);
    showRows();
}

void SweepSettings::setControlEnabled(std::size_t row, SettingsTag tag, bool enabled) {
    if (row < m_rows.size()) m_rows[row].setControlEnabled(tag, enabled);
}

void SweepSettings::chooseRole(std::size_t row, PlotRole role) {
    guardedPlot(m_document, [&] { m_document.plot().chooseRole(row, role); });
    showRows(); // another variable may have lost its axis
}

void SweepSettings::hold(std::size_t row, PlotAct act, float constant) {
    guardedPlot(m_document, [&] { m_document.plot().hold(row, constant, act); });
    showRows();
}

QWidget* SweepSettings::controlOf(const Changed<AxisChoice>& change) const {
    if (change.row >= m_rows.size()) return nullptr;
    return &m_rows[change.row].control(change.before.function == change.after.function ? SettingsTag::HeldField
                                                                                       : SettingsTag::RoleChooser);
}

void SweepSettings::showRows() {
    const auto& variables = m_document.results().grid.variables;
    for (std::size_t row = 0; row < std::min(m_rows.size(), variables.size()); ++row) {
        m_rows[row].showVariable(variables[row]);
    }
}

} // namespace orrery
