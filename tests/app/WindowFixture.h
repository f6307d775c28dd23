#pragma once

#include "app/AppController.h"
#include "app/document/ApplicationServices.h"
#include "app/document/DocumentWindow.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QStringList>
#include <QTest>
#include <functional>
#include <memory>
#include <string>

namespace orrery::test {

/// Waits, with the application running, until the condition holds.
[[nodiscard]] inline bool waitFor(const std::function<bool()>& condition, int timeoutMs = 20'000) {
    return QTest::qWaitFor(condition, timeoutMs);
}

/// Real mouse and keys: runs xdotool with the arguments to its end, with the application running meanwhile, as a drag
/// needs it. Points are on the screen.
void xdotool(const QStringList& arguments);
void clickAt(QPoint point, const QStringList& click = {"sleep", "0.05", "click", "1"});
/// The arguments for one drag from point to point in several steps; `last` goes before the button is let go.
[[nodiscard]] QStringList dragArguments(QPoint from, QPoint to, const QStringList& last = {});
[[nodiscard]] QPoint centreOnScreen(const QWidget& widget);

/// Chooses with the keys, as a user does.
void choose(QComboBox& box, int index);

/// The application on a virtual display with a small window manager, in a home and a temporary directory of its own.
class WindowTest : public testing::Test {
public:
    WindowTest();
    ~WindowTest() override;

protected:
    /// Opens the setup (a copy of a sample, when the name has no slash) and waits for its window to be active.
    DocumentWindow& open(const std::string& nameOrPath);
    DocumentWindow& openNew();
    /// The path of a copy of the sample setup and its model, which a test may change.
    std::string sampleCopy(const std::string& name);
    /// Runs the document's setup by its command and waits for the end.
    static void run(DocumentWindow& window);

    /// A child of the window, by its object name; a test fails without it.
    template <typename Widget>
    static Widget& find(const QWidget& window, const char* name) {
        auto* found = window.findChild<Widget*>(name);
        if (found == nullptr) throw std::runtime_error(std::string("no control ") + name);
        return *found;
    }
    static QAction& action(const QWidget& window, const char* name) { return find<QAction>(window, name); }
    static void activate(QWidget& window);

    TemporaryFolder files;
    std::unique_ptr<ApplicationServices> services;
    std::unique_ptr<AppController> controller;
};

} // namespace orrery::test
