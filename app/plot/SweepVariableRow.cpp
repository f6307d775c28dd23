#include "app/plot/SweepVariableRow.h"

#include "app/widgets/ElidedLabel.h"
#include "app/widgets/NumberField.h"
#include "app/widgets/WheelGuard.h"
#include "platform/qt/QtText.h"
#include "platform/values/Numbers.h"
#include "run/IndexSet.h"
#include "run/SweepVariables.h"

#include <fmt/format.h>

#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QSlider>
#include <algorithm>
#include <limits>

namespace orrery {

namespace {

/// Opens for the arrow keys, instead of taking every role on the way and so another variable's axis.
class RoleChooser : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        const bool arrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
        arrow ? showPopup() : QComboBox::keyPressEvent(event);
    }
};

/// A value of the grid, without the last digits, which are rounding.
QString gridText(const IndependentVariable& variable, std::uint32_t index) {
    return qtText(fmt::format("{:.6g}", valueAtIndex(variable, index)));
}

QString heldText(const IndependentVariable& variable) {
    const std::uint32_t index = heldIndex(variable);
    const bool onGrid = variable.constant() == heldValueAt(variable, index);
    return onGrid ? gridText(variable, index) : qtText(plainText(variable.constant()));
}

int lastPosition(const IndependentVariable& variable) {
    const std::uint32_t last = std::max(variable.stridesPerCycle(), 1U) - 1;
    return static_cast<int>(std::min<std::uint32_t>(last, std::numeric_limits<int>::max()));
}

QString gridDescription(const IndependentVariable& variable) {
    const std::uint32_t count = variable.stridesPerCycle();
    if (count == 0) return QObject::tr("No values");
    if (count == 1) return QObject::tr("One value, %1").arg(gridText(variable, 0));
    return QObject::tr("%1 values, %2 to %3").arg(count).arg(gridText(variable, 0), gridText(variable, count - 1));
}

} // namespace

SweepVariableRow::SweepVariableRow(std::size_t number, QWidget* parent)
    : QWidget(parent), m_name(new ElidedLabel(this)), m_role(new RoleChooser(this)),
      m_slider(new QSlider(Qt::Horizontal, this)), m_field(new NumberField(this)) {
    makeControls();
    nameControls(number);
    connect(m_role, &QComboBox::activated, this, [this](int role) { emit roleChosen(static_cast<PlotRole>(role)); });
    connect(m_slider, &QSlider::valueChanged, this,
            [this](int position) { emit heldIndexChosen(static_cast<unsigned>(position)); });
    connect(m_field, &NumberField::numberTyped, this, &SweepVariableRow::heldValueTyped);
}

void SweepVariableRow::makeControls() {
    m_role->addItems({tr("Held at"), tr("Axis 1"), tr("Axis 2")});
    m_name->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_field->setMaximumWidth(m_field->fontMetrics().averageCharWidth() * 12);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 6);
    grid->setVerticalSpacing(2);
    grid->addWidget(m_name, 0, 0);
    grid->addWidget(m_role, 0, 1);
    grid->addWidget(m_slider, 1, 0);
    grid->addWidget(m_field, 1, 1);
    grid->setColumnStretch(0, 1);
    for (QWidget* control : {static_cast<QWidget*>(m_role), static_cast<QWidget*>(m_slider)}) {
        guardFromWheel(*control);
    }
}

void SweepVariableRow::nameControls(std::size_t number) {
    const QString suffix = QString::number(number);
    setObjectName("sweepVariable" + suffix);
    m_name->setObjectName("sweepName" + suffix);
    m_role->setObjectName("sweepRole" + suffix);
    m_slider->setObjectName("sweepHeldSlider" + suffix);
    m_field->setObjectName("sweepHeldField" + suffix);
}

void SweepVariableRow::showVariable(const IndependentVariable& variable) {
    const QSignalBlocker quiet(m_slider);
    describe(variable);
    m_role->setCurrentIndex(variable.function() <= PlotRole::Axis2 ? static_cast<int>(variable.function()) : -1);
    m_slider->setRange(0, lastPosition(variable));
    m_slider->setValue(static_cast<int>(std::min<std::uint32_t>(heldIndex(variable), std::numeric_limits<int>::max())));
    m_field->showNumber(heldText(variable));
    m_field->setToolTip(variable.stridesPerCycle() == 0
                            ? tr("The value at which it is held")
                            : tr("Drawn at %1").arg(gridText(variable, heldIndex(variable))));
    for (const SettingsTag tag : {SettingsTag::HeldField, SettingsTag::HeldSlider}) {
        setControlEnabled(tag, variable.function() == PlotRole::Held);
    }
}

void SweepVariableRow::describe(const IndependentVariable& variable) {
    const QString name = qtText(variable.name());
    m_name->setText(name);
    m_name->setToolTip(name + '\n' + gridDescription(variable));
    setAccessibleName(name);
    m_role->setAccessibleName(tr("Role of %1 in the plot").arg(name));
    m_role->setToolTip(tr("Put it on an axis, or hold it at one value"));
    m_slider->setAccessibleName(tr("Held value of %1").arg(name));
    m_slider->setToolTip(gridDescription(variable));
    m_field->setAccessibleName(tr("Held value of %1, typed").arg(name));
}

void SweepVariableRow::setControlEnabled(SettingsTag tag, bool enabled) {
    control(tag).setEnabled(enabled);
}

QWidget& SweepVariableRow::control(SettingsTag tag) const {
    if (tag == SettingsTag::RoleChooser) return *m_role;
    if (tag == SettingsTag::HeldSlider) return *m_slider;
    return *m_field;
}

} // namespace orrery
