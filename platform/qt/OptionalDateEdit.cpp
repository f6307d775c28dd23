#include "platform/qt/OptionalDateEdit.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QSignalBlocker>

namespace orrery {

namespace {

constexpr qint64 referenceDateUnixSeconds = 978'307'200; // 1 January 2001, 00:00:00 UTC

} // namespace

OptionalDateEdit::OptionalDateEdit(QWidget* parent)
    : QWidget(parent), m_present(new QCheckBox(this)), m_field(new QDateTimeEdit(this)) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_present);
    layout->addWidget(m_field, 1);
    m_present->setObjectName("startDayPresent");
    m_present->setAccessibleName(tr("Has a start day"));
    m_present->setToolTip(tr("Without a start day the first day is 1"));
    m_field->setObjectName("startDayField");
    m_field->setAccessibleName(tr("Start day"));
    m_field->setDisplayFormat("yyyy-MM-dd HH:mm");
    m_field->setCalendarPopup(true);
    m_field->setKeyboardTracking(false);
    setFocusProxy(m_field);
    connect(m_present, &QCheckBox::toggled, m_field, &QWidget::setEnabled);
    connect(m_present, &QCheckBox::clicked, this, &OptionalDateEdit::edited);
    connect(m_field, &QDateTimeEdit::dateTimeChanged, this, &OptionalDateEdit::edited);
    setDate(Date());
}

std::optional<Date> OptionalDateEdit::date() const {
    if (!m_present->isChecked()) return std::nullopt;
    const Date date{m_field->dateTime().toSecsSinceEpoch() - referenceDateUnixSeconds, 0};
    return date.seconds == m_shown.seconds ? m_shown : date;
}

void OptionalDateEdit::setDate(std::optional<Date> date) {
    const QSignalBlocker quietBox(m_present);
    const QSignalBlocker quietField(m_field);
    m_present->setChecked(date.has_value());
    m_field->setEnabled(date.has_value());
    if (!date) return;
    m_shown = *date;
    m_field->setDateTime(QDateTime::fromSecsSinceEpoch(date->seconds + referenceDateUnixSeconds));
}

} // namespace orrery
