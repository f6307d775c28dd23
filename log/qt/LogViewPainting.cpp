// How the log looks: which row and column is where, and the painting of the visible rows.

#include "log/qt/LogRow.h"
#include "log/qt/LogView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

namespace orrery {
namespace {

constexpr int margin = 4;

/// Characters that are drawn in one go, from their first column.
struct Run {
    QString text;
    int column = 0;
    int columns = 0;
    bool selected = false;
    bool plain = false; // one column each: more of them may follow
};

/// Plain characters in long runs, each other one with its combining marks alone, so that every one is in its column.
std::vector<Run> runsOf(const std::vector<LogCell>& cells, int firstColumn, std::uint64_t rowBegin,
                        LogText::Row selection) {
    std::vector<Run> runs;
    for (const LogCell& cell : cells) {
        if (cell.column + cell.width <= firstColumn) continue;
        const std::uint64_t offset = rowBegin + cell.offset;
        const bool selected = offset >= selection.begin && offset < selection.end;
        const bool plain = cell.shown < 0x80 && cell.width == 1;
        const bool combines = cell.width == 0;
        if (runs.empty() || (!combines && !(plain && runs.back().plain && runs.back().selected == selected))) {
            runs.push_back({{}, cell.column, 0, selected, plain});
        }
        runs.back().text += QString::fromUcs4(&cell.shown, 1);
        runs.back().columns += cell.width;
    }
    return runs;
}

} // namespace

int LogView::pageRows() const {
    return std::max(viewport()->height() / m_rowHeight, 1);
}

int LogView::pageColumns() const {
    return std::max(static_cast<int>((viewport()->width() - 2 * margin) / m_cellWidth), 1);
}

qreal LogView::left(int column) const {
    return margin + (column - horizontalScrollBar()->value()) * m_cellWidth;
}

std::uint64_t LogView::rowUnder(int y) const {
    const auto below = static_cast<std::int64_t>(std::floor(y / static_cast<double>(m_rowHeight)));
    const auto row = static_cast<std::int64_t>(m_scroll.top()) + below;
    return std::clamp(static_cast<std::uint64_t>(std::max<std::int64_t>(row, 0)), m_text.firstRow(),
                      m_text.endRow() - 1);
}

/// The border between two characters that is nearest.
std::uint64_t LogView::offsetAt(QPoint position) const {
    const LogText::Row row = m_text.rows(rowUnder(position.y()), 1).front();
    const qreal column = (position.x() - left(0)) / m_cellWidth;
    const auto cells = cellsOfRow(m_text.bytes(row.begin, row.end), std::max(static_cast<int>(column) + 1, 0));
    const auto cell = std::ranges::find_if(
        cells, [column](const LogCell& c) { return c.width > 0 && c.column + c.width / 2.0 > column; });
    return cell == cells.end() ? row.end : row.begin + cell->offset;
}

void LogView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.setFont(font());
    const int widestBefore = m_widestSeen;
    const int first = event->rect().top() / m_rowHeight;
    const int count = event->rect().bottom() / m_rowHeight - first + 1;
    int top = first * m_rowHeight;
    for (const LogText::Row& row :
         m_text.rows(m_scroll.top() + static_cast<std::uint64_t>(first), static_cast<std::size_t>(count))) {
        paintRow(painter, row, top);
        top += m_rowHeight;
    }
    if (m_widestSeen > std::max(widestBefore, static_cast<int>(m_text.widestRow()))) setNeedsDisplay();
}

void LogView::paintRow(QPainter& painter, LogText::Row row, int top) {
    const int firstColumn = horizontalScrollBar()->value();
    const auto cells = cellsOfRow(m_text.bytes(row.begin, row.end), firstColumn + pageColumns() + 2);
    const int end = cells.empty() ? 0 : cells.back().column + cells.back().width;
    m_widestSeen = std::max(m_widestSeen, end);
    const QFontMetricsF metrics(painter.font(), viewport());
    for (const Run& run : runsOf(cells, firstColumn, row.begin, selection())) {
        if (run.selected) {
            painter.fillRect(QRectF(left(run.column), top, run.columns * m_cellWidth, m_rowHeight),
                             palette().highlight());
        }
        painter.setPen(palette().color(run.selected ? QPalette::HighlightedText : QPalette::Text));
        painter.drawText(QPointF(left(run.column), top + metrics.ascent()), run.text);
    }
    fillLineEnd(painter, row, end, top);
}

/// A selected line end shows as half a column.
void LogView::fillLineEnd(QPainter& painter, LogText::Row row, int column, int top) const {
    const LogText::Row selected = selection();
    if (row.end < selected.begin || row.end >= selected.end) return;
    const std::string byte = m_text.bytes(row.end, row.end + 1);
    if (byte != "\n" && byte != "\r") return; // the line goes on in the next row
    painter.fillRect(QRectF(left(column), top, m_cellWidth / 2, m_rowHeight), palette().highlight());
}

} // namespace orrery
