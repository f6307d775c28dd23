#include "platform/qt/OptionalDateEdit.h"

#include "platform/Calendar.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <algorithm>
#include <cstdlib>

namespace orrery {

namespace {

Date dateOf(const QDateTime& time) {
    return {time.toSecsSinceEpoch() - referenceDateInUnixTime, 0};
}

QDateTime localTime(const Date& date) {
    return QDateTime::fromSecsSinceEpoch(date.seconds + referenceDateInUnixTime);
}

/// The limits that hold in the local zone as in UTC.
QDateTime earliest() {
    const QDate day(1, 1, 1);
    return std::max(QDateTime(day, QTime(0, 0)), QDateTime(day, QTime(0, 0), Qt::UTC).toLocalTime());
}
QDateTime latest() {
    const QDate day(9999, 12, 31);
    return std::min(QDateTime(day, QTime(23, 59, 59)), QDateTime(day, QTime(23, 59, 59), Qt::UTC).toLocalTime());
}

bool canBeShown(const Date& date) {
    return date >= dateOf(earliest()) && dateOf(latest()).seconds >= date.seconds;
}

/// "UTC+2", "UTC-3:30", "UTC"; seconds where a zone had them long ago.
QString zoneName(int offsetFromUtc) {
    if (offsetFromUtc == 0) return "UTC";
    const int seconds = std::abs(offsetFromUtc);
    QString name = QString("UTC%1%2").arg(offsetFromUtc < 0 ? "-" : "+").arg(seconds / 3600);
    if (seconds % 3600 != 0) name += QString(":%1").arg(seconds / 60 % 60, 2, 10, QChar('0'));
    if (seconds % 60 != 0) name += QString(":%1").arg(seconds % 60, 2, 10, QChar('0'));
    return name;
}

} // namespace

OptionalDateEdit::OptionalDateEdit(QWidget* parent)
    : QWidget(parent), m_present(new QCheckBox(this)), m_field(new QDateTimeEdit(this)), m_meaning(new QLabel(this)) {
    layOut();
    connect(m_present, &QCheckBox::toggled, this, &OptionalDateEdit::enableField);
    connect(m_present, &QCheckBox::clicked, this, &OptionalDateEdit::userEdited);
    connect(m_field, &QDateTimeEdit::dateTimeChanged, this, &OptionalDateEdit::userEdited);
    setDate(Date());
}

void OptionalDateEdit::layOut() {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_present);
    layout->addWidget(m_field, 1);
    layout->addWidget(m_meaning);
    m_present->setObjectName("startDayPresent");
    m_present->setAccessibleName(tr("Has a start day"));
    m_present->setToolTip(tr("Without a start day the first day is 1"));
    m_field->setObjectName("startDayField");
    m_field->setAccessibleName(tr("Start day"));
    m_field->setDisplayFormat("yyyy-MM-dd HH:mm:ss");
    m_field->setCalendarPopup(true);
    m_field->setKeyboardTracking(false);
    m_field->setDateTimeRange(earliest(), latest());
    m_meaning->setObjectName("startDayMeaning");
    m_meaning->setToolTip(tr("The day's number in the year, at which the results begin, and the time zone"));
    setFocusPolicy(Qt::StrongFocus); // for the key of its label
}

/// The keyboard goes where something can be done with it.
void OptionalDateEdit::enableField(bool enabled) {
    m_field->setEnabled(enabled);
    setFocusProxy(enabled ? static_cast<QWidget*>(m_field) : m_present);
}

std::optional<Date> OptionalDateEdit::date() const {
    if (!m_present->isChecked()) return std::nullopt;
    return m_field->dateTime() == m_shownField ? m_shown : dateOf(m_field->dateTime());
}

void OptionalDateEdit::setDate(std::optional<Date> date) {
    const QSignalBlocker quietBox(m_present);
    const QSignalBlocker quietField(m_field);
    m_present->setChecked(date.has_value());
    enableField(date.has_value());
    if (date) {
        m_shown = *date;
        const bool isShown = canBeShown(*date);
        m_field->setSpecialValueText(isShown ? QString() : QStringLiteral(" ")); // stands for the least value
        m_field->setDateTime(isShown ? localTime(*date) : m_field->minimumDateTime());
        m_shownField = m_field->dateTime();
    }
    describe();
}

void OptionalDateEdit::userEdited() {
    describe();
    emit edited();
}

void OptionalDateEdit::describe() {
    const std::optional<Date> shown = date();
    QString words = tr("day 1");
    if (shown) {
        words = tr("day %1, %2")
                    .arg(currentCalendar().ordinalDayInYear(*shown))
                    .arg(zoneName(localTime(*shown).offsetFromUtc()));
        if (!canBeShown(*shown)) words += tr(" (%1)").arg(QString::fromStdString(dateDescription(*shown)));
    }
    m_meaning->setText(words);
    m_field->setAccessibleDescription(words);
}

} // namespace orrery
