#pragma once

#include "log/LogSearch.h"
#include "log/LogText.h"
#include "log/qt/LogScroll.h"
#include "platform/Outlets.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QString>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// Where a search begins: after the selection, before it, or at its begin again while the text to find is being typed.
enum class FindStart { Next, Previous, Here };

/// A log in a monospaced font, read-only and made for gigabytes, of which most lie on the disk: an append costs its
/// piece, a repaint the visible rows.
///
/// Follows the end until the user scrolls up, and again from the end. A line longer than LogText::longestRow goes on in
/// the next row. Used on the main thread.
class LogView : public QAbstractScrollArea, public StatusView {
    Q_OBJECT

public:
    explicit LogView(QWidget* parent = nullptr);

    void setString(std::string_view text) override; // follows the end again
    void appendString(std::string_view text) override;
    void setNeedsDisplay() override;

    /// Looks for the text, small and capital letters alike, once around. Selects and shows what it finds. A short log
    /// is searched at once; a long one in slices, with searchFinished() in the end. Ends an earlier search.
    /// @returns whether it is found already
    bool find(const QString& text, FindStart start);
    void cancelFind();

    void selectAll();
    /// Puts the selection on the clipboard; what is too much for it is refused with noticed().
    void copy();
    [[nodiscard]] bool hasSelection() const { return selectedLength() > 0; }
    [[nodiscard]] std::uint64_t selectedLength() const { return selection().end - selection().begin; } // bytes
    [[nodiscard]] QString selectedText() const;
    /// The end of the text, whole lines or not.
    [[nodiscard]] QString text(std::uint64_t lastBytes = 1U << 16U) const;
    [[nodiscard]] const LogText& logText() const { return m_text; }

signals:
    void searchFinished(bool found);
    void noticed(const QString& message); // for the user, what could not be done
    void findRequested();                 // from the context menu, as the next one
    void saveRequested();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void timerEvent(QTimerEvent* event) override;

private:
    [[nodiscard]] LogText::Row selection() const;
    void select(std::uint64_t anchor, std::uint64_t caret);
    void measureFont();
    void updateScrollBars();
    void reveal(LogText::Row range);
    [[nodiscard]] int columnOf(LogText::Row row, std::uint64_t offset) const;
    void showColumns(int first, int end);
    void searchSlice();
    void tellReaders();
    void dragTo(QPoint position);
    void keepPrimarySelection() const;
    [[nodiscard]] int pageRows() const;
    [[nodiscard]] int pageColumns() const;
    [[nodiscard]] std::uint64_t rowUnder(int y) const;
    [[nodiscard]] std::uint64_t offsetAt(QPoint position) const;
    [[nodiscard]] qreal left(int column) const; // where it is in the viewport
    void paintRow(QPainter& painter, LogText::Row row, int top);
    void fillLineEnd(QPainter& painter, LogText::Row row, int column, int top) const;

    LogText m_text{makeLogStore};
    LogScroll m_scroll{*verticalScrollBar()};
    std::unique_ptr<LogSearch> m_search;
    std::uint64_t m_anchor = 0; // the selection lies between these two
    std::uint64_t m_caret = 0;
    std::uint64_t m_told = 0; // how much of the text readers of the screen know of
    bool m_follows = true;
    bool m_dragging = false;
    int m_widestSeen = 0; // columns
    qreal m_cellWidth = 1;
    int m_rowHeight = 1;
    QBasicTimer m_refreshTimer; // one repaint for many appends
    QBasicTimer m_searchTimer;
    QBasicTimer m_dragTimer; // scrolls while the mouse is held outside
};

} // namespace orrery
