// What mouse and keyboard do in the log.

#include "log/qt/LogView.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <cctype>

namespace orrery {
namespace {

constexpr int dragScrollMs = 50;

bool isInWord(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0x80 || byte == '_' || std::isalnum(value) != 0;
}

} // namespace

/// The window's menus have the same keys: while the log has the focus, they are its own.
bool LogView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        auto* key = static_cast<QKeyEvent*>(event); // NOLINT(cppcoreguidelines-pro-type-static-cast-downcast)
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll)) {
            event->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

void LogView::keyPressEvent(QKeyEvent* event) {
    QScrollBar& bar = *verticalScrollBar();
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (event->key() == Qt::Key_Home) {
        bar.setValue(0);
    } else if (event->key() == Qt::Key_End) {
        updateScrollBars();
        bar.setValue(bar.maximum());
        m_follows = true; // also where there is nothing to scroll
    } else {
        QAbstractScrollArea::keyPressEvent(event);
    }
}

void LogView::contextMenuEvent(QContextMenuEvent* event) {
    auto* menu = new QMenu(this);
    menu->setObjectName("logMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [menu](const QString& name, const QString& text, QKeySequence::StandardKey key, auto&& act) {
        QAction* action = menu->addAction(text);
        action->setObjectName(name);
        if (key != QKeySequence::UnknownKey) action->setShortcut(key);
        QObject::connect(action, &QAction::triggered, menu, act);
        return action;
    };
    add("logCopy", tr("Copy"), QKeySequence::Copy, [this] { copy(); })->setEnabled(hasSelection());
    add("logSelectAll", tr("Select All"), QKeySequence::SelectAll, [this] {
        selectAll();
    })->setEnabled(m_text.end() > m_text.begin());
    menu->addSeparator();
    add("logSaveAs", tr("Save Log As…"), QKeySequence::UnknownKey, [this] { emit saveRequested(); });
    add("logFind", tr("Find…"), QKeySequence::Find, [this] { emit findRequested(); });
    menu->popup(event->globalPos());
}

void LogView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    m_dragging = true;
    const std::uint64_t offset = offsetAt(event->pos());
    select(event->modifiers().testFlag(Qt::ShiftModifier) ? m_anchor : offset, offset);
}

void LogView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging) return;
    dragTo(event->pos());
    if (viewport()->rect().contains(event->pos())) {
        m_dragTimer.stop();
    } else if (!m_dragTimer.isActive()) {
        m_dragTimer.start(dragScrollMs, this);
    }
}

void LogView::dragTo(QPoint position) {
    const auto scroll = [](QScrollBar& bar, int outside, int unit) { bar.setValue(bar.value() + outside / unit); };
    const QRect area = viewport()->rect();
    const auto beyond = [](int at, int last) { return at < 0 ? at - 20 : at > last ? at - last + 20 : 0; };
    scroll(*verticalScrollBar(), beyond(position.y(), area.bottom()), 20);
    scroll(*horizontalScrollBar(), beyond(position.x(), area.right()), 20);
    select(m_anchor, offsetAt(position));
}

void LogView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_dragging) return;
    m_dragging = false;
    m_dragTimer.stop();
    keepPrimarySelection();
    setNeedsDisplay(); // the end was not followed meanwhile
}

void LogView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const LogText::Row row = m_text.rows(rowUnder(event->pos().y()), 1).front();
    const std::string bytes = m_text.bytes(row.begin, row.end);
    // The word under the mouse, also when the nearest border is the word's end.
    std::size_t begin = offsetAt(event->pos() - QPoint(static_cast<int>(m_cellWidth / 2), 0)) - row.begin;
    std::size_t end = begin;
    while (begin > 0 && isInWord(bytes[begin - 1]))
        --begin;
    while (end < bytes.size() && isInWord(bytes[end]))
        ++end;
    select(row.begin + begin, row.begin + end);
    keepPrimarySelection();
}

} // namespace orrery
