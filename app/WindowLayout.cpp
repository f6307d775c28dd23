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
constexpr int cascade = 28; // pixels between windows that would hide each other

std::string splitterKey(const QSplitter& splitter) {
    return "documentWindow." + splitter.objectName().toStdString();
}

QByteArray stored(const UserDefaults& defaults, const std::string& key) {
    return QByteArray::fromBase64(QByteArray::fromStdString(defaults.stringForKey(key).value_or("")));
}

/// Shrinks and moves the window into the screen that it lies on, or into the first one.
void fitOnScreen(QMainWindow& window) {
    const QScreen* screen = QGuiApplication::screenAt(window.geometry().center());
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return;
    const QRect room = screen->availableGeometry();
    window.resize(window.size().boundedTo(room.size()));
    QRect place = window.geometry();
    place.moveLeft(std::clamp(place.left(), room.left(), std::max(room.left(), room.right() + 1 - place.width())));
    place.moveTop(std::clamp(place.top(), room.top(), std::max(room.top(), room.bottom() + 1 - place.height())));
    window.setGeometry(place);
}

bool hidesAnother(const QMainWindow& window) {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [&](const QWidget* other) {
        return other != &window && other->isVisible() && other->isWindow() && other->inherits("QMainWindow") &&
               other->pos() == window.pos();
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
    window.resize(1180, 820);
    if (restoresWindowLayout(defaults)) {
        window.restoreGeometry(stored(defaults, geometryKey)); // false for what is none: the size stays
        for (QSplitter* splitter : window.findChildren<QSplitter*>()) {
            splitter->restoreState(stored(defaults, splitterKey(*splitter)));
        }
    }
    while (hidesAnother(window)) {
        window.move(window.pos() + QPoint(cascade, cascade));
    }
    fitOnScreen(window);
}

} // namespace orrery
