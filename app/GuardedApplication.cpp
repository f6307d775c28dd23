#include "app/GuardedApplication.h"

#include "platform/Log.h"
#include "platform/qt/FailureEdge.h"
#include "platform/qt/QtAlerts.h"

#include <cstddef>
#include <exception>
#include <new>
#include <string>

namespace orrery {
namespace {

constexpr std::size_t reserveSize = 4U << 20U; // a sheet takes some 100 KB

std::string reasonOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::bad_alloc&) {
        return "There is not enough memory. Close other programs, or choose a smaller grid.";
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "The reason is not known.";
    }
}

/// The window at the bottom of a stack of sheets, each of which goes with its answer.
QWidget* windowBelowSheets(QWidget* window) {
    while (window != nullptr && window->parentWidget() != nullptr)
        window = window->parentWidget()->window();
    return window;
}

} // namespace

GuardedApplication::GuardedApplication(int& count, char** arguments)
    : QApplication(count, arguments), m_reserve(new char[reserveSize]) {
    setFailureHandler([this](const std::exception_ptr& failure) { showFailure(failure); });
}

GuardedApplication::~GuardedApplication() {
    setFailureHandler({});
}

bool GuardedApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        reportFailure();
    }
    return true;
}

void GuardedApplication::showFailure(const std::exception_ptr& failure) {
    m_reserve.reset();
    const std::string reason = reasonOf(failure);
    logLine(reason);
    QWidget* window = windowBelowSheets(activeWindow());
    if (window == nullptr && m_frontWindow) window = m_frontWindow();
    if (m_tellingOn == nullptr) {
        m_tellingOn = window;
        QtAlerts(window).beginSheet({"The last operation failed. The documents are as they were.", reason, {"OK"}},
                                    [this](std::size_t) { m_tellingOn.clear(); });
    }
    m_reserve.reset(new (std::nothrow) char[reserveSize]);
}

} // namespace orrery
