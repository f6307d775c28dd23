#include "log/qt/LogView.h"

#include "log/qt/LogRow.h"
#include "platform/qt/QtText.h"
#include "platform/values/Utf8.h"

#include <QAccessible>
#include <QClipboard>
#include <QElapsedTimer>
#include <QEvent>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QScrollBar>
#include <QTimerEvent>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace orrery {
namespace {

constexpr int refreshMs = 30;
constexpr int sliceMs = 8;
constexpr std::uint64_t clipboardLimit = 1U << 25U;
constexpr std::uint64_t mostTold = 1U << 12U;
constexpr std::uint64_t primarySelectionLimit = 1U << 20U;

LogPattern patternFor(const QString& text) {
    std::vector<std::array<std::string, 2>> characters;
    for (const uint codePoint : text.toUcs4()) {
        std::array<std::string, 2> forms;
        appendUtf8(forms[0], QChar::toLower(codePoint));
        appendUtf8(forms[1], QChar::toUpper(codePoint));
        characters.push_back(std::move(forms));
    }
    return LogPattern(std::move(characters));
}

} // namespace

LogView::LogView(QWidget* parent) : QAbstractScrollArea(parent) {
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::Monospace);
    font.setKerning(false);
    setFont(font);
    measureFont();
}

void LogView::setString(std::string_view text) {
    cancelFind();
    m_text.clear();
    m_told = 0;
    select(0, 0);
    m_dragging = false;
    m_widestSeen = 0;
    m_follows = true;
    appendString(text);
}

void LogView::appendString(std::string_view text) {
    m_text.append(text);
    setNeedsDisplay();
}

void LogView::setNeedsDisplay() {
    if (!m_refreshTimer.isActive()) m_refreshTimer.start(refreshMs, this);
}

void LogView::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_refreshTimer.timerId()) {
        m_refreshTimer.stop();
        updateScrollBars();
        viewport()->update();
        tellReaders();
    } else if (event->timerId() == m_searchTimer.timerId()) {
        searchSlice();
    } else if (event->timerId() == m_dragTimer.timerId()) {
        dragTo(viewport()->mapFromGlobal(QCursor::pos()));
    } else {
        QAbstractScrollArea::timerEvent(event);
    }
}

/// Of what has come since the last time, its end: nobody listens to more.
void LogView::tellReaders() {
    const std::uint64_t known = std::min(std::exchange(m_told, m_text.end()), m_text.end());
    if (!QAccessible::isActive() || known == m_text.end()) return;
    const QString added = text(std::min(m_text.end() - known, mostTold));
    QAccessibleTextInsertEvent event(this, static_cast<int>(text().size() - added.size()), added);
    QAccessible::updateAccessibility(&event);
}

bool LogView::find(const QString& text, FindStart start) {
    cancelFind();
    if (text.isEmpty()) return false;
    const bool backward = start == FindStart::Previous;
    std::uint64_t from = start == FindStart::Next ? selection().end : selection().begin;
    if (const auto top = m_text.rows(m_scroll.top(), 1); !hasSelection() && !top.empty()) from = top.front().begin;
    m_search = std::make_unique<LogSearch>(m_text, patternFor(text), from,
                                           backward ? SearchDirection::Backward : SearchDirection::Forward);
    m_searchTimer.start(0, this);
    searchSlice();
    return m_search == nullptr && hasSelection();
}

void LogView::cancelFind() {
    m_searchTimer.stop();
    m_search.reset();
}

void LogView::searchSlice() {
    QElapsedTimer timer;
    timer.start();
    LogSearch::State state = LogSearch::State::Running;
    while (state == LogSearch::State::Running && timer.elapsed() < sliceMs)
        state = m_search->step();
    if (state == LogSearch::State::Running) return;
    const LogText::Row match = m_search->match();
    cancelFind();
    const bool found = state == LogSearch::State::Found;
    select(found ? match.begin : selection().begin, found ? match.end : selection().begin);
    if (found) reveal(match);
    emit searchFinished(found);
}

void LogView::selectAll() {
    select(m_text.begin(), m_text.end());
    keepPrimarySelection();
}

void LogView::copy() {
    const LogText::Row selected = selection();
    if (!hasSelection()) return;
    if (selected.end - selected.begin > clipboardLimit) {
        emit noticed(tr("The selection is too long to be copied. Save the log to a file, or select less."));
    } else {
        QGuiApplication::clipboard()->setText(selectedText());
    }
}

/// For the middle mouse button, where the desktop has that.
void LogView::keepPrimarySelection() const {
    QClipboard* clipboard = QGuiApplication::clipboard();
    const LogText::Row selected = selection();
    const bool fits = hasSelection() && selected.end - selected.begin <= primarySelectionLimit;
    if (fits && clipboard->supportsSelection()) clipboard->setText(selectedText(), QClipboard::Selection);
}

QString LogView::selectedText() const {
    const LogText::Row selected = selection();
    return qtText(m_text.bytes(selected.begin, selected.end));
}

QString LogView::text(std::uint64_t lastBytes) const {
    return qtText(m_text.bytes(m_text.end() - std::min(lastBytes, m_text.end()), m_text.end()));
}

LogText::Row LogView::selection() const {
    const auto [begin, end] = std::minmax(m_anchor, m_caret);
    return {std::max(begin, m_text.begin()), std::max(end, m_text.begin())}; // the rest is dropped
}

void LogView::select(std::uint64_t anchor, std::uint64_t caret) {
    m_anchor = anchor;
    m_caret = caret;
    viewport()->update();
}

void LogView::measureFont() {
    const QFontMetricsF metrics(font());
    m_cellWidth = std::max<qreal>(metrics.horizontalAdvance(QString(100, 'M')) / 100, 1);
    m_rowHeight = std::max(static_cast<int>(std::ceil(metrics.lineSpacing())), 1);
}

void LogView::updateScrollBars() {
    const bool follows = m_follows && !m_dragging;
    const int columns = std::max(static_cast<int>(m_text.widestRow()), m_widestSeen);
    m_scroll.setRows(m_text.firstRow(), m_text.endRow(), pageRows());
    horizontalScrollBar()->setPageStep(pageColumns());
    horizontalScrollBar()->setRange(0, std::max(columns - pageColumns(), 0));
    if (follows) m_scroll.scrollToEnd();
}

void LogView::scrollContentsBy(int, int) {
    if (m_scroll.takeValue()) m_follows = m_scroll.isAtEnd();
    viewport()->update();
}

/// Brings the range into sight, in the middle when it was not there.
void LogView::reveal(LogText::Row range) {
    m_follows = false;
    updateScrollBars();
    const std::uint64_t row = m_text.rowAt(range.begin);
    const auto page = static_cast<std::uint64_t>(pageRows());
    if (row < m_scroll.top() || row >= m_scroll.top() + page) m_scroll.scrollTo(row - std::min(row, page / 2));
    const LogText::Row shown = m_text.rows(row, 1).front();
    showColumns(columnOf(shown, range.begin), columnOf(shown, std::min(range.end, shown.end)));
}

int LogView::columnOf(LogText::Row row, std::uint64_t offset) const {
    const auto cells = cellsOfRow(m_text.bytes(row.begin, offset), std::numeric_limits<int>::max());
    return cells.empty() ? 0 : cells.back().column + cells.back().width;
}

void LogView::showColumns(int first, int end) {
    const int left = horizontalScrollBar()->value();
    if (first >= left && end <= left + pageColumns()) return;
    horizontalScrollBar()->setValue(end <= pageColumns() ? 0 : first - pageColumns() / 4);
}

void LogView::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange) return;
    measureFont();
    updateScrollBars();
}

void LogView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

} // namespace orrery
