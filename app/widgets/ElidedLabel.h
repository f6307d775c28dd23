#pragma once

#include <QLabel>

namespace orrery {

/// A label of one line with a name in it, which is shortened in the middle where it is too long; the tool tip has it
/// whole.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace orrery
