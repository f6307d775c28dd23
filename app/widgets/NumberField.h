#pragma once

#include <QLineEdit>

namespace orrery {

/// A field for one number, with a decimal point in every locale. What is not a number is refused with the reason, and
/// the field shows its number again. Signals come from the user alone.
class NumberField : public QLineEdit {
    Q_OBJECT

public:
    explicit NumberField(QWidget* parent = nullptr);

    void showNumber(const QString& text);

signals:
    void numberTyped(float number);
    void refused(const QString& reason);

private:
    void takeTyped();

    QString m_shown; // until the user types
};

} // namespace orrery
