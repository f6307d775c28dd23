#pragma once

#include "platform/Date.h"

#include <QWidget>
#include <optional>

class QCheckBox;
class QDateTimeEdit;

namespace orrery {

/// A date that may be absent: a check box and a date field. Shown in the local calendar and time zone.
class OptionalDateEdit : public QWidget {
    Q_OBJECT

public:
    explicit OptionalDateEdit(QWidget* parent = nullptr);
    [[nodiscard]] std::optional<Date> date() const;
    void setDate(std::optional<Date> date); // emits nothing

signals:
    void edited(); // by the user

private:
    QCheckBox* m_present;
    QDateTimeEdit* m_field;
    Date m_shown; // what the field was last set to; its nanoseconds are kept while the user changes nothing
};

} // namespace orrery
