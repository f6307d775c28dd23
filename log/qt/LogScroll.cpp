#include "log/qt/LogScroll.h"

#include <QScrollBar>
#include <algorithm>
#include <cstdlib>

namespace orrery {
namespace {

constexpr std::uint64_t mostSteps = 1U << 30U;
constexpr int byHand = 10'000; // steps of keys and wheel; a dragged handle makes more with every pixel

} // namespace

void LogScroll::setRows(std::uint64_t first, std::uint64_t end, int page) {
    m_first = first;
    m_last = std::max(end - std::min(end, static_cast<std::uint64_t>(page)), first);
    m_rowsPerStep = (m_last - m_first) / mostSteps + 1;
    m_top = std::clamp(m_top, m_first, m_last);
    m_showing = true;
    m_bar.setPageStep(page);
    m_bar.setRange(0, static_cast<int>((m_last - m_first) / m_rowsPerStep));
    m_showing = false;
    showTop();
}

void LogScroll::scrollTo(std::uint64_t row) {
    m_top = std::clamp(row, m_first, m_last);
    showTop();
}

bool LogScroll::takeValue() {
    const int value = m_bar.value();
    if (m_showing || value == m_value) return false;
    const std::int64_t steps = std::int64_t{value} - m_value;
    if (std::abs(steps) > byHand || value == 0 || value == m_bar.maximum()) {
        const bool atEnd = value == m_bar.maximum();
        scrollTo(atEnd ? m_last : m_first + static_cast<std::uint64_t>(value) * m_rowsPerStep);
    } else {
        const auto rows = static_cast<std::uint64_t>(std::abs(steps));
        scrollTo(steps > 0 ? m_top + rows : m_top - std::min(m_top, rows));
    }
    return true;
}

/// Between the ends the bar always leaves room for steps by hand.
void LogScroll::showTop() {
    const auto steps = static_cast<int>((m_top - m_first) / m_rowsPerStep);
    const int most = m_bar.maximum();
    const bool exact = m_rowsPerStep == 1 || m_top == m_first || m_top == m_last;
    m_value = m_top == m_last ? most : exact ? steps : std::clamp(steps, byHand, most - byHand);
    m_showing = true;
    m_bar.setValue(m_value);
    m_showing = false;
}

} // namespace orrery
