#pragma once

#include "platform/Outlets.h"

#include <QMessageBox>
#include <functional>
#include <vector>

class QPushButton;

namespace orrery {

/// An alert as a message box: its icon says how serious it is, its text is as wide as it needs, each button has a
/// letter, and Return presses the one that loses nothing.
///
/// A sheet's box is shared by all alerts of one matter: a later one takes the place of what it shows.
class AlertBox : public QMessageBox {
public:
    using Answered = std::function<void(std::size_t)>;

    AlertBox(QWidget* window, const AlertText& text);

    [[nodiscard]] const AlertText& alert() const { return m_alert; }
    /// Shows this one instead. A question that goes unanswered is answered as by Escape; who waits for the end of a
    /// mere message goes on waiting.
    void replace(const AlertText& alert, Answered answered);
    /// Makes it a sheet, to be opened, which deletes itself once it is answered.
    void beginSheet(Answered answered);
    [[nodiscard]] bool isOpenSheet() const { return !m_answered.empty(); }
    /// The number of the button that was clicked; that of Escape when none was.
    [[nodiscard]] std::size_t answer() const;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void setAlert(const AlertText& alert);
    void addButtons();
    void fitWidth();

    AlertText m_alert;
    std::vector<QPushButton*> m_buttons; // in the alert's order
    std::vector<Answered> m_answered;
};

} // namespace orrery
