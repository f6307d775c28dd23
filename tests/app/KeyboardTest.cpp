// The windows without a mouse, and without eyes.
#include "app/PreferencesPanel.h"
#include "app/SetupWindow.h"
#include "app/StartPanel.h"
#include "log/qt/LogView.h"

#include <gmock/gmock.h>

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <map>

namespace orrery::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The keys of a window's labels, buttons and menus as they are now: which two have, and which do nothing.
class Mnemonics {
public:
    explicit Mnemonics(QWidget& window) {
        for (const QWidget* each : window.findChildren<QWidget*>()) {
            if (each->inherits("QMenu")) addActions(static_cast<const QMenu*>(each)->title(), each->actions());
            if (!each->isVisible()) continue;
            if (each->inherits("QMenuBar")) addActions("window", each->actions());
            if (const auto* label = qobject_cast<const QLabel*>(each)) addLabel(*label);
            if (each->inherits("QAbstractButton")) add("window", each->property("text").toString());
            if (each->inherits("QGroupBox")) add("window", each->property("title").toString());
        }
        for (const QAction* action : window.findChildren<QAction*>())
            if (!action->shortcut().isEmpty()) add("shortcuts", action->text(), action->shortcut());
    }
    [[nodiscard]] const std::vector<std::string>& faults() const { return m_faults; }

private:
    void addLabel(const QLabel& label) {
        const QWidget* buddy = label.buddy();
        const bool isMeant = !QKeySequence::mnemonic(label.text()).isEmpty() && label.textFormat() != Qt::PlainText;
        if (isMeant && (buddy == nullptr || buddy->focusPolicy() == Qt::NoFocus || !buddy->isVisible()))
            m_faults.push_back("dead: " + coreText(label.text()));
        if (buddy != nullptr) add("window", label.text());
    }
    void addActions(const QString& where, const QList<QAction*>& actions) {
        for (const QAction* action : actions)
            if (action->isVisible()) add(where, action->text());
    }
    void add(const QString& where, const QString& text) { add(where, text, QKeySequence::mnemonic(text)); }
    void add(const QString& where, const QString& text, const QKeySequence& key) {
        if (key.isEmpty()) return;
        const auto [owner, isNew] = m_owners.emplace(std::pair(where, key), text);
        if (!isNew) m_faults.push_back("twice: " + coreText(owner->second + " and " + text + " in " + where));
    }

    std::map<std::pair<QString, QKeySequence>, QString> m_owners;
    std::vector<std::string> m_faults;
};

std::string nameOf(QObject* object) {
    return coreText(QAccessible::queryAccessibleInterface(object)->text(QAccessible::Name));
}

class KeyboardTest : public SetupWindowTest {
protected:
    void openWithResults() {
        openSample("insect-two-steppers.orrery");
        run(*window);
        find<QTabWidget>(*window, "tabView").setCurrentIndex(1);
        QCoreApplication::processEvents();
    }
};

TEST_F(KeyboardTest, EveryKeyOfALabelAButtonOrAMenuDoesOneThing) {
    controller->showStartPanelWhenEmpty();
    openWithResults();
    EXPECT_THAT(Mnemonics(*window).faults(), IsEmpty());
    find<QTabWidget>(*window, "tabView").setCurrentIndex(0);
    EXPECT_THAT(Mnemonics(*window).faults(), IsEmpty());
    xdotool({"key", "alt+d"});
    ASSERT_TRUE(waitFor([&] { return find<QWidget>(*window, "startDayField").hasFocus(); }));
    window->document().setup().editStartDay(std::nullopt);
    outline().setFocus();
    xdotool({"key", "alt+d"});
    ASSERT_TRUE(waitFor([&] { return find<QWidget>(*window, "startDayPresent").hasFocus(); }));
    field("modelFilter").setFocus();
    xdotool({"type", "eggs"});
    xdotool({"key", "Down"});
    ASSERT_TRUE(waitFor([&] { return outline().hasFocus(); }));
    EXPECT_TRUE(outline().currentIndex().isValid());

    controller->preferences();
    int windows = 0;
    for (QWidget* each : QApplication::topLevelWidgets()) {
        if (!each->inherits("orrery::StartPanel") && !each->inherits("orrery::PreferencesPanel")) continue;
        ++windows;
        EXPECT_THAT(Mnemonics(*each).faults(), IsEmpty()) << coreText(each->objectName());
    }
    EXPECT_EQ(windows, 2);
}

TEST_F(KeyboardTest, TabGoesFromThePlotToItsVariablesBeforeAllElse) {
    openWithResults();
    find<QWidget>(*window, "glView").setFocus();
    std::vector<std::string> order;
    while (order.size() < 80 && (order.empty() || order.back() != "startStopButton")) {
        xdotool({"key", "Tab"});
        order.push_back(coreText(window->focusWidget()->objectName()));
    }
    ASSERT_GE(order.size(), 4U);
    EXPECT_THAT(std::vector(order.begin(), order.begin() + 4),
                ElementsAre("sweepRole0", "sweepHeldSlider0", "sweepHeldField0", "sweepRole1"));
    const auto place = [&](const char* name) { return std::ranges::find(order, name) - order.begin(); };
    EXPECT_LT(place("sweepRole2"), place("responseInclude0"));
    EXPECT_LT(place("responseColor0"), place("yRotationSlider"));
    EXPECT_LT(place("yRotationSlider"), place("startStopButton"));
}

TEST_F(KeyboardTest, ReadersOfTheScreenGetWhatIsWrittenAndANameForEveryControl) {
    openWithResults();
    auto& log = find<LogView>(*window, "statusView");
    auto& runState = find<QLabel>(*window, "runState");
    EXPECT_EQ(nameOf(&runState), coreText(runState.text()));
    EXPECT_EQ(nameOf(&find<QLabel>(*window, "sweepSize")), coreText(find<QLabel>(*window, "sweepSize").text()));
    QAccessibleTextInterface* text = QAccessible::queryAccessibleInterface(&log)->textInterface();
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(0, text->characterCount()), log.text());
    int begin = 0;
    int end = 0;
    const QString line = text->textAtOffset(0, QAccessible::LineBoundary, &begin, &end);
    EXPECT_EQ(line, log.text().left(log.text().indexOf('\n') + 1));
    log.appendString(std::string(1U << 20U, 'x'));
    EXPECT_EQ(text->characterCount(), 1 << 16);

    auto* role = QAccessible::queryAccessibleInterface(&find<QComboBox>(*window, "sweepRole0"));
    EXPECT_EQ(coreText(role->text(QAccessible::Name)), "Role of /Orchard/Weather/height in the plot");
    EXPECT_EQ(coreText(role->text(QAccessible::Value)), "Held at");
    EXPECT_EQ(role->role(), QAccessible::ComboBox);

    for (int tab : {1, 0}) {
        find<QTabWidget>(*window, "tabView").setCurrentIndex(tab);
        for (QWidget* control : window->findChildren<QWidget*>()) {
            if (!control->isVisible() || (control->focusPolicy() & Qt::TabFocus) == 0) continue;
            const bool insideAnother = control->parentWidget()->focusProxy() == control ||
                                       qobject_cast<QAbstractSpinBox*>(control->parentWidget()) != nullptr;
            if (insideAnother || control->objectName().startsWith("qt_")) continue; // Qt's own part of a control
            EXPECT_NE(control->objectName(), "") << control->metaObject()->className();
            EXPECT_NE(nameOf(control), "") << coreText(control->objectName());
        }
    }
}

} // namespace
} // namespace orrery::test
