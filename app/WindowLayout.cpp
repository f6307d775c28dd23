#include "app/WindowLayout.h"

#include <QApplication>
#include <QByteArray>
#include <QMainWindow>
#include <QScreen>
#include <QSplitter>
#include <algorithm>
#include <optional>

namespace orrery {

namespace {

constexpr const char* choiceKey = "restoreWindowLayout";
constexpr const char* geometryKey = "documentWindow.geometry";
constexpr int cascade = 28;  // pixels between windows that would hide each other
constexpr int titleBar = 40; // pixels to leave for it

std::string splitterKey(const QSplitter& splitter) {
    return "documentWindow." + splitter.objectName().toStdString();
}

QByteArray stored(const UserDefaults& defaults, const std::string& key) {
    return QByteArray::fromBase64(QByteArray::fromStdString(defaults.stringForKey(key).value_or("")));
}

/// The size of a first window, or the whole of a smaller screen.
QSize defaultSize() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize room = screen == nullptr ? QSize(1024, 700) : screen->availableGeometry().size() - QSize(0, titleBar);
    return QSize(1180, 820).boundedTo(room);
}

bool hidesAnother(const QMainWindow& window) {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [&](const QWidget* other) {
        return other != &window && other->isVisible() && other->isWindow() && other->inherits("QMainWindow") &&
               other->geometry().topLeft() == window.geometry().topLeft();
    });
}

} // namespace

bool restoresWindowLayout(const UserDefaults& defaults) {
    return defaults.stringForKey(choiceKey) != std::optional<std::string>("no");
}

void setRestoresWindowLayout(UserDefaults& defaults, bool restores) {
    defaults.setObject(restores ? "yes" : "no", choiceKey);
}

void keepWindowLayout(const QMainWindow& window, UserDefaults& defaults) {
    if (!restoresWindowLayout(defaults)) return;
    defaults.setObject(window.saveGeometry().toBase64().toStdString(), geometryKey);
    for (const QSplitter* splitter : window.findChildren<QSplitter*>()) {
        defaults.setObject(splitter->saveState().toBase64().toStdString(), splitterKey(*splitter));
    }
}

void restoreWindowLayout(QMainWindow& window, const UserDefaults& defaults) {
    window.resize(defaultSize());
    if (!restoresWindowLayout(defaults)) return;
    for (QSplitter* splitter : window.findChildren<QSplitter*>()) {
        splitter->restoreState(stored(defaults, splitterKey(*splitter)));
    }
    // Moves and shrinks the window where today's screens are smaller; false when nothing was kept.
    if (!window.restoreGeometry(stored(defaults, geometryKey))) return;
    while (hidesAnother(window)) {
        window.setGeometry(window.geometry().translated(cascade, cascade));
    }
}

} // namespace orrery
