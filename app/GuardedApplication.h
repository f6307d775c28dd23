#pragma once

#include <QApplication>
#include <QPointer>
#include <functional>
#include <memory>

namespace orrery {

/// The application object, at whose edge an exception that leaves a slot, an event's handler or a callback becomes a
/// sheet: that one operation is lost, the documents stay. One, made by main.
class GuardedApplication : public QApplication {
    Q_OBJECT

public:
    GuardedApplication(int& count, char** arguments);
    ~GuardedApplication() override;

    /// The window for what belongs to no active one.
    void setFrontWindow(std::function<QWidget*()> frontWindow) { m_frontWindow = std::move(frontWindow); }

    bool notify(QObject* receiver, QEvent* event) override;

private:
    void showFailure(const std::exception_ptr& failure);

    std::function<QWidget*()> m_frontWindow;
    std::unique_ptr<char[]> m_reserve; // given up to say that memory ran out
    QPointer<QWidget> m_tellingOn;     // one at a time: a timer that fails would fill the screen
};

} // namespace orrery
