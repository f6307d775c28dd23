#pragma once

#include <QLabel>

namespace orrery {

/// A label of one line that leaves out the front of a text that is too long; the tool tip has it whole.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace orrery
