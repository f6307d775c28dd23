#pragma once

#include "document/PlotAct.h"
#include "run/ResponseVariable.h"

#include <QWidget>

class QCheckBox;
class QToolButton;

namespace orrery {

class ElidedLabel;
class NumberField;

/// The controls of one response variable: whether it is drawn, its scale and its colour. Signals come from the user
/// alone.
class ResponseVariableRow : public QWidget {
    Q_OBJECT

public:
    ResponseVariableRow(std::size_t number, QWidget* parent);

    void showVariable(const ResponseVariable& variable);
    [[nodiscard]] QWidget& control(PlotAct act) const; // that does it

signals:
    void included(bool drawn);
    void scaleTyped(float scale);
    void colorAsked();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override; // on the name: as on the check box

private:
    void makeControls();
    void nameControls(std::size_t number);
    void showColor(const Color& color);

    QCheckBox* m_include;
    ElidedLabel* m_name;
    NumberField* m_scale;
    QToolButton* m_color;
};

} // namespace orrery
