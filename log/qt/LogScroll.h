#pragma once

#include <cstdint>

class QScrollBar;

namespace orrery {

/// Which row of the log is the first to be seen, by a scroll bar that counts fewer steps than a log may have rows.
///
/// Up to 2^30 rows the bar's value is the row. From there on a step of the bar that a key, a click or the wheel makes
/// is still a row; where its handle is dragged to is in proportion.
class LogScroll {
public:
    explicit LogScroll(QScrollBar& bar) : m_bar(bar) {}

    /// Takes the rows from `first` until `end`, of which `page` are seen at once. The row on top stays, if it can.
    void setRows(std::uint64_t first, std::uint64_t end, int page);
    void scrollTo(std::uint64_t row);
    void scrollToEnd() { scrollTo(m_last); }
    /// Takes a new value of the bar over. False when it is none of the user's.
    bool takeValue();

    [[nodiscard]] std::uint64_t top() const { return m_top; }
    [[nodiscard]] bool isAtEnd() const { return m_top == m_last; }

private:
    void showTop();

    QScrollBar& m_bar;
    std::uint64_t m_first = 0;
    std::uint64_t m_last = 0; // the last that can be on top
    std::uint64_t m_top = 0;
    std::uint64_t m_rowsPerStep = 1;
    int m_value = 0; // of the bar, for m_top
    bool m_showing = false;
};

} // namespace orrery
