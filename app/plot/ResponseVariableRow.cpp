#include "app/plot/ResponseVariableRow.h"

#include "app/widgets/ElidedLabel.h"
#include "app/widgets/NumberField.h"
#include "app/widgets/QtColor.h"
#include "platform/qt/QtText.h"
#include "platform/values/Numbers.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>

namespace orrery {

namespace {

QIcon swatch(const QColor& color, const QSize& size, qreal pixelRatio, const QColor& edge) {
    QPixmap picture(size * pixelRatio);
    picture.setDevicePixelRatio(pixelRatio);
    picture.fill(color);
    QPainter painter(&picture);
    painter.setPen(edge);
    painter.drawRect(QRect(QPoint(0, 0), size).adjusted(0, 0, -1, -1));
    return picture;
}

} // namespace

ResponseVariableRow::ResponseVariableRow(std::size_t number, QWidget* parent)
    : QWidget(parent), m_include(new QCheckBox(this)), m_name(new ElidedLabel(this)), m_scale(new NumberField(this)),
      m_color(new QToolButton(this)) {
    makeControls();
    nameControls(number);
    connect(m_include, &QCheckBox::clicked, this, &ResponseVariableRow::included);
    connect(m_scale, &NumberField::numberTyped, this, &ResponseVariableRow::scaleTyped);
    connect(m_color, &QToolButton::clicked, this, &ResponseVariableRow::colorAsked);
}

void ResponseVariableRow::makeControls() {
    m_name->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_scale->setFixedWidth(m_scale->fontMetrics().averageCharWidth() * 9);
    m_scale->setToolTip(tr("Scale: the response's values are multiplied by this when drawn"));
    m_color->setAutoRaise(true);
    m_color->setIconSize({24, 14});
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    for (QWidget* control : {static_cast<QWidget*>(m_include), static_cast<QWidget*>(m_name),
                             static_cast<QWidget*>(m_scale), static_cast<QWidget*>(m_color)}) {
        line->addWidget(control);
    }
}

void ResponseVariableRow::nameControls(std::size_t number) {
    const QString suffix = QString::number(number);
    setObjectName("response" + suffix);
    m_include->setObjectName("responseInclude" + suffix);
    m_name->setObjectName("responseName" + suffix);
    m_scale->setObjectName("responseScale" + suffix);
    m_color->setObjectName("responseColor" + suffix);
}

void ResponseVariableRow::showVariable(const ResponseVariable& variable) {
    const QString name = qtText(variable.name());
    setAccessibleName(name);
    m_name->setText(name);
    m_name->setToolTip(name);
    m_include->setAccessibleName(tr("Draw %1").arg(name));
    m_include->setToolTip(tr("Draw %1").arg(name));
    m_include->setChecked(variable.includep());
    m_scale->setAccessibleName(tr("Scale of %1").arg(name));
    m_scale->showNumber(qtText(plainText(variable.scale())));
    showColor(variable.color());
}

void ResponseVariableRow::showColor(const Color& color) {
    const QColor shown = qtColor(color);
    m_color->setIcon(swatch(shown, m_color->iconSize(), devicePixelRatioF(), palette().color(QPalette::Mid)));
    m_color->setAccessibleName(tr("Colour of %1: %2").arg(accessibleName(), shown.name()));
    m_color->setToolTip(tr("Colour %1; choose another").arg(shown.name()));
}

QWidget& ResponseVariableRow::control(PlotAct act) const {
    if (act == PlotAct::TypeScale) return *m_scale;
    if (act == PlotAct::ChooseColor) return *m_color;
    return *m_include;
}

void ResponseVariableRow::mouseReleaseEvent(QMouseEvent* event) {
    if (m_name->geometry().contains(event->position().toPoint())) m_include->click();
}

} // namespace orrery
