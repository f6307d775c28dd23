#include "app/widgets/WindowLayout.h"

#include <QApplication>
#include <QByteArray>
#include <QMainWindow>
#include <QScreen>
#include <QSplitter>
#include <algorithm>
#include <optional>
#include <vector>

namespace orrery {

namespace {

constexpr const char* choiceKey = "restoreWindowLayout";
constexpr const char* geometryKey = "documentWindow.geometry";
constexpr QSize firstSize(1180, 820);
constexpr int cascade = 28;  // pixels between windows that would hide each other
constexpr int titleBar = 40; // pixels to leave for it
constexpr int border = 8;    // and on the other sides of a window

std::string splitterKey(const QSplitter& splitter) {
    return "documentWindow." + splitter.objectName().toStdString();
}

QByteArray stored(const UserDefaults& defaults, const std::string& key) {
    return QByteArray::fromBase64(QByteArray::fromStdString(defaults.stringForKey(key).value_or("")));
}

/// Where a window and its title bar may lie: the screen without panels.
QRect roomFor(const QMainWindow& window) {
    const QScreen* screen = QGuiApplication::screenAt(window.geometry().center());
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? window.geometry()
                             : screen->availableGeometry().adjusted(border, titleBar, -border, -border);
}

std::vector<const QWidget*> othersInSight(const QMainWindow& window) {
    std::vector<const QWidget*> others;
    for (const QWidget* other : QApplication::topLevelWidgets()) {
        if (other != &window && other->isVisible() && other->inherits(window.metaObject()->className()))
            others.push_back(other);
    }
    return others;
}

const QWidget& frontOf(const std::vector<const QWidget*>& windows) {
    const auto active = std::ranges::find(windows, QApplication::activeWindow());
    return active == windows.end() ? *windows.back() : **active;
}

/// Whole on the screen, as far as its parts let it be so small.
void putIntoSight(QMainWindow& window, const QRect& room) {
    QRect frame(window.pos(), window.size().boundedTo(room.size()));
    frame.moveLeft(std::clamp(frame.left(), room.left(), room.right() + 1 - frame.width()));
    frame.moveTop(std::clamp(frame.top(), room.top(), room.bottom() + 1 - frame.height()));
    window.setGeometry(frame);
}

/// A step right and down from the window that it would hide; from the edge of the screen on, beginning at the corner.
void stepAside(QMainWindow& window, const QRect& room, const std::vector<const QWidget*>& others) {
    for (std::size_t step = 0; step < others.size(); ++step) {
        const bool hidesOne = std::ranges::any_of(
            others, [&](const QWidget* other) { return other->geometry().topLeft() == window.geometry().topLeft(); });
        if (!hidesOne) return;
        QRect frame = window.geometry().translated(cascade, cascade);
        if (frame.right() > room.right()) frame.moveLeft(room.left() + static_cast<int>(step) % cascade);
        if (frame.bottom() > room.bottom()) frame.moveTop(room.top() + static_cast<int>(step) % cascade);
        window.setGeometry(frame);
    }
}

} // namespace

QSize sizeOnScreen(QSize wanted) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen == nullptr
               ? wanted
               : wanted.boundedTo(screen->availableGeometry().size() - QSize(2 * border, titleBar + border));
}

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
    window.resize(sizeOnScreen(firstSize));
    bool restored = false;
    if (restoresWindowLayout(defaults)) {
        for (QSplitter* splitter : window.findChildren<QSplitter*>()) {
            splitter->restoreState(stored(defaults, splitterKey(*splitter)));
        }
        // Moves and shrinks the window where today's screens are smaller; false when nothing was kept.
        restored = window.restoreGeometry(stored(defaults, geometryKey));
    }
    const std::vector<const QWidget*> others = othersInSight(window);
    if (window.isMaximized() || window.isFullScreen() || (others.empty() && !restored)) return;
    if (!others.empty()) window.move(frontOf(others).geometry().topLeft());
    const QRect room = roomFor(window);
    putIntoSight(window, room);
    stepAside(window, room, others);
}

} // namespace orrery
