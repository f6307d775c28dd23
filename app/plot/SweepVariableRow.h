#pragma once

#include "platform/Outlets.h"
#include "run/IndependentVariable.h"

#include <QWidget>
#include <cstdint>

class QComboBox;
class QSlider;

namespace orrery {

class ElidedLabel;
class NumberField;

/// The controls of one sweep variable: its role in the plot and, while it lies on no axis, the value at which it is
/// held: a slider over the grid's values and a field. Signals come from the user alone.
class SweepVariableRow : public QWidget {
    Q_OBJECT

public:
    SweepVariableRow(std::size_t number, QWidget* parent);

    void showVariable(const IndependentVariable& variable);
    void setControlEnabled(SettingsTag tag, bool enabled);
    [[nodiscard]] QWidget& control(SettingsTag tag) const;

signals:
    void roleChosen(PlotRole role);
    void heldIndexChosen(std::uint32_t index);
    void heldValueTyped(float value);

private:
    void makeControls();
    void nameControls(std::size_t number);
    void describe(const IndependentVariable& variable);

    ElidedLabel* m_name;
    QComboBox* m_role;
    QSlider* m_slider;
    NumberField* m_field;
};

} // namespace orrery
