#pragma once

#include "platform/Outlets.h"

#include <QPointer>
#include <QWidget>

namespace orrery {

/// Alerts and sheets of one window. A sheet is a message box that blocks its window alone; several wait for each other,
/// but a matter has one: a later alert about it takes the place of what the open sheet shows.
class QtAlerts : public Alerts {
public:
    explicit QtAlerts(QWidget* window) : m_window(window) {}

    /// Escape and the closed box answer "Cancel" when there is such a button, else the last one.
    [[nodiscard]] std::size_t runModal(const AlertText& text) override;
    void beginSheet(const AlertText& text, std::function<void(std::size_t)> answered) override;
    void requestUserAttention() override;

private:
    QPointer<QWidget> m_window;
};

} // namespace orrery
