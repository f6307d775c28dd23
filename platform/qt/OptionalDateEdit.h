#pragma once

#include "platform/values/Date.h"

#include <QDateTime>
#include <QWidget>
#include <optional>

class QCheckBox;
class QDateTimeEdit;
class QLabel;

namespace orrery {

/// A date that may be absent: a check box, a field, and beside it what the date comes to ("day 258, UTC+2"). Shown in
/// the local calendar and time zone, from the year 1 to 9999 there and in UTC, as files have it. Date and time can be
/// edited one without the other. A date outside of these years is shown in words alone, and kept until it is edited.
class OptionalDateEdit : public QWidget {
    Q_OBJECT

public:
    explicit OptionalDateEdit(QWidget* parent = nullptr);
    [[nodiscard]] std::optional<Date> date() const;
    void setDate(std::optional<Date> date); // emits nothing

signals:
    void edited(); // by the user

private:
    void layOut();
    void userEdited();
    void describe();
    void enableField(bool enabled);

    QCheckBox* m_present;
    QDateTimeEdit* m_field;
    QLabel* m_meaning;
    Date m_shown;           // what was last set
    QDateTime m_shownField; // and the field with it: as long as that stays, so does the date to its nanoseconds
};

} // namespace orrery
