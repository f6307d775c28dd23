#include "log/qt/LogView.h"

#include "log/qt/LogPanel.h"
#include "log/qt/LogRow.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "support/OffscreenTest.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <fstream>
#include <memory>

namespace orrery {
namespace {

std::string numberedLines(int count, int first = 0) {
    std::string text;
    for (int i = first; i < first + count; ++i)
        text += "line " + std::to_string(i) + "\n";
    return text;
}

class LogViewTest : public test::OffscreenTest {
protected:
    LogViewTest() {
        m_panel.resize(500, 300);
        m_panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_panel));
        m_view.setFocus();
    }
    QScrollBar& bar() { return *m_view.verticalScrollBar(); }
    /// Appends, and waits until the scroll bar knows it.
    void append(const std::string& text) {
        m_view.appendString(text);
        const auto rows = static_cast<int>(m_view.logText().endRow());
        EXPECT_TRUE(QTest::qWaitFor([&] { return bar().maximum() == std::max(rows - bar().pageStep(), 0); }));
    }
    /// The place of a column in the n-th visible row.
    QPoint at(int row, int column) {
        const QFontMetricsF metrics(m_view.font());
        return {4 + qRound(column * metrics.horizontalAdvance('M')),
                qRound((row + 0.5) * std::ceil(metrics.lineSpacing()))};
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(m_view.viewport(), Qt::LeftButton, modifiers, from);
        QTest::mouseMove(m_view.viewport(), to);
        QTest::mouseRelease(m_view.viewport(), Qt::LeftButton, modifiers, to);
    }
    QString found(const QString& text, FindStart start) {
        return m_view.find(text, start) ? m_view.selectedText() : QString("nothing");
    }
    template <class Widget>
    Widget& child(const char* name) {
        return *m_panel.findChild<Widget*>(name);
    }

    LogPanel m_panel;
    LogView& m_view = m_panel.view();
};

TEST_F(LogViewTest, FollowsTheEndUnlessScrolledUp) {
    append(numberedLines(100));
    EXPECT_EQ(bar().value(), bar().maximum());
    bar().setValue(10);
    append(numberedLines(100));
    EXPECT_EQ(bar().value(), 10);
    m_panel.resize(500, 200);
    EXPECT_EQ(bar().value(), 10);
    QTest::keyClick(&m_view, Qt::Key_End);
    append(numberedLines(100));
    EXPECT_EQ(bar().value(), bar().maximum());
    bar().setValue(10);
    m_view.setString("");
    append(numberedLines(100));
    EXPECT_EQ(bar().value(), bar().maximum()) << "a new text is followed again";
}

TEST_F(LogViewTest, MouseAndKeysSelectAndCopy) {
    append("first line\nsecond, größe\r\nthird\n");
    const auto copied = [this] {
        QTest::keySequence(&m_view, QKeySequence::Copy);
        return QApplication::clipboard()->text();
    };
    drag(at(0, 6), at(2, 2));
    EXPECT_EQ(copied(), "line\nsecond, größe\r\nth");
    drag(at(2, 5), at(2, 5), Qt::ShiftModifier);
    EXPECT_EQ(copied(), "line\nsecond, größe\r\nthird");
    drag(at(2, 2), at(0, 6));
    EXPECT_EQ(copied(), "line\nsecond, größe\r\nth") << "upwards";
    QTest::mouseDClick(m_view.viewport(), Qt::LeftButton, {}, at(1, 13));
    EXPECT_EQ(copied(), "größe");
    QTest::keySequence(&m_view, QKeySequence::SelectAll);
    EXPECT_EQ(copied(), "first line\nsecond, größe\r\nthird\n");
    drag(at(1, 3), at(1, 3));
    EXPECT_FALSE(m_view.hasSelection());
}

TEST_F(LogViewTest, FindSelectsShowsAndWraps) {
    append(numberedLines(1000) + "Größe\n");
    QTest::keyClick(&m_view, Qt::Key_Home);
    EXPECT_EQ(found("LINE 50", FindStart::Next), "line 50");
    EXPECT_TRUE(bar().value() > 20 && bar().value() <= 50) << bar().value();
    EXPECT_EQ(found("line 50", FindStart::Here), "line 50");
    EXPECT_EQ(found("line 500", FindStart::Previous), "line 500") << "wraps upwards";
    EXPECT_EQ(found("line 50\n", FindStart::Next), "line 50\n") << "wraps downwards";
    EXPECT_EQ(found("gRÖSSE", FindStart::Next), "nothing");
    EXPECT_EQ(found("gRÖßE", FindStart::Next), "Größe");
    const QSignalSpy finished(&m_view, &LogView::searchFinished);
    EXPECT_EQ(found("absent", FindStart::Next), "nothing");
    ASSERT_EQ(finished.size(), 1);
    EXPECT_FALSE(finished[0][0].toBool());
    EXPECT_FALSE(m_view.hasSelection());
}

TEST_F(LogViewTest, LongSearchRunsInSlicesAndIsCancelled) {
    const std::string filling(1U << 20U, '.');
    for (int i = 0; i < 100; ++i)
        m_view.appendString(filling);
    m_view.appendString("needle");
    QSignalSpy finished(&m_view, &LogView::searchFinished);
    EXPECT_FALSE(m_view.find("needle", FindStart::Next));
    EXPECT_EQ(finished.size(), 0);
    EXPECT_FALSE(m_view.find("needle", FindStart::Next)); // the second one replaces the first
    ASSERT_TRUE(finished.wait());
    EXPECT_TRUE(finished[0][0].toBool());
    EXPECT_EQ(m_view.selectedText(), "needle");
    EXPECT_FALSE(m_view.find("absent", FindStart::Next));
    m_view.setString("new");
    QTest::qWait(0);
    EXPECT_EQ(finished.size(), 1) << "the text that was searched is gone";
}

TEST_F(LogViewTest, SavesTheExactBytesAndTellsWhatFails) {
    const test::TemporaryFolder folder;
    std::string bytes("a\0b\r\xff\n", 6);
    bytes += numberedLines(100'000);
    m_view.setString(bytes);
    m_panel.saveAs();
    auto& dialog = child<QFileDialog>("logSaveDialog");
    emit dialog.fileSelected(QString::fromStdString(folder.path() + "log.txt"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return fileExists(folder.path() + "log.txt"); }));
    EXPECT_EQ(readWholeFile(folder.path() + "log.txt"), bytes);

    emit dialog.fileSelected(QString::fromStdString(folder.path() + "none/log.txt"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_panel.findChild<QMessageBox*>("alert") != nullptr; }));
    EXPECT_TRUE(child<QMessageBox>("alert").informativeText().contains("none/log.txt"));
    child<QMessageBox>("alert").close();
    dialog.close();
}

TEST_F(LogViewTest, MemoryStaysBelowTheLimit) {
    const auto residentBytes = [] {
        std::ifstream statm("/proc/self/statm");
        std::uint64_t total = 0;
        std::uint64_t resident = 0;
        statm >> total >> resident;
        return resident * 4096;
    };
    constexpr std::uint64_t size = 500U << 20U;
    const std::string piece = std::string(1023, 'x') + "\n" + numberedLines(6000).substr(0, 1U << 14U);
    const std::uint64_t before = residentBytes();
    while (m_view.logText().end() < size) {
        m_view.appendString(piece);
        QTest::qWait(0); // the window goes on
    }
    const std::uint64_t grown = residentBytes() - before;
#ifndef __SANITIZE_ADDRESS__ // its allocator keeps what was freed
    EXPECT_LT(grown, LogText::defaultMemoryLimit * 5 / 4);
#else
    EXPECT_LT(grown, LogText::defaultMemoryLimit * 2);
#endif
    EXPECT_EQ(found(QString::fromStdString(piece.substr(0, 1100)), FindStart::Next).size(), 1100) << "on the disk";
    EXPECT_EQ(m_view.text(6), QString::fromStdString(piece.substr(piece.size() - 6)));
}

TEST_F(LogViewTest, BarReachesMoreRowsThanItCanCount) {
    QScrollBar many;
    LogScroll scroll(many);
    QObject::connect(&many, &QScrollBar::valueChanged, &many, [&scroll] { scroll.takeValue(); });
    constexpr std::uint64_t rows = 20'000'000'000;
    constexpr std::uint64_t first = 5'000;
    scroll.setRows(first, rows, 50);
    EXPECT_EQ(scroll.top(), first);
    many.setValue(many.maximum());
    EXPECT_EQ(scroll.top(), rows - 50);
    many.triggerAction(QAbstractSlider::SliderPageStepSub);
    EXPECT_EQ(scroll.top(), rows - 100) << "a page is a page";
    scroll.scrollTo(7'000);
    many.triggerAction(QAbstractSlider::SliderSingleStepAdd);
    EXPECT_EQ(scroll.top(), 7'001U);
    scroll.setRows(first, rows + 1'000'000'000, 50);
    EXPECT_EQ(scroll.top(), 7'001U) << "stays while more comes";
    many.setValue(many.maximum() / 2);
    EXPECT_NEAR(static_cast<double>(scroll.top()), 10.5e9, 1e6);
    many.setValue(0);
    EXPECT_EQ(scroll.top(), first);
}

TEST_F(LogViewTest, EndlessLineIsShownInRows) {
    m_view.setString(std::string(100U << 20U, 'x'));
    EXPECT_EQ(m_view.logText().endRow(), (100U << 20U) / LogText::longestRow);
    EXPECT_TRUE(QTest::qWaitFor([this] { return bar().value() > 0 && bar().value() == bar().maximum(); }));
    const QImage left = m_view.grab().toImage();
    m_view.horizontalScrollBar()->setValue(m_view.horizontalScrollBar()->maximum());
    EXPECT_NE(m_view.grab().toImage(), left) << "the rows end there";
    drag(at(0, 0), at(1, 3));
    EXPECT_LE(m_view.selectedLength(), LogText::longestRow + 3);
}

TEST_F(LogViewTest, FindBarWorksByKeys) {
    append(numberedLines(50));
    auto& field = child<QLineEdit>("logFindField");
    const auto& status = child<QLabel>("logFindStatus");
    EXPECT_FALSE(field.isVisible());
    QTest::keySequence(&m_view, QKeySequence::Find);
    ASSERT_TRUE(field.isVisible() && field.hasFocus());
    QTest::keyClicks(&field, "line 1");
    EXPECT_EQ(m_view.selectedText(), "line 1");
    EXPECT_EQ(status.text(), "");
    QTest::keyClicks(&field, "x");
    EXPECT_EQ(status.text(), "No match");
    QTest::keyClick(&field, Qt::Key_Backspace);
    QTest::keyClicks(&field, "0");
    EXPECT_EQ(m_view.selectedText(), "line 10");
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(m_view.selectedText(), "line 10") << "the only one";
    child<QToolButton>("logFindPrevious").click();
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_FALSE(field.isVisible());
    EXPECT_TRUE(m_view.hasFocus());
}

TEST(LogCells, StandOnTheGrid) {
    struct Case {
        const char* name;
        std::string bytes;
        std::vector<int> columns; // of each cell, then the end
        std::u32string shown;
    };
    for (const Case& row :
         {Case{"plain", "ab", {0, 1, 2}, U"ab"}, Case{"tabs", "a\t\tb", {0, 1, 8, 16, 17}, U"a  b"},
          Case{"wide", "日a", {0, 2, 3}, U"日a"}, Case{"combining", "e\u0301x", {0, 1, 1, 2}, U"e\u0301x"},
          Case{"controls", std::string("\0\x1b\x7f", 3), {0, 1, 2, 3}, U"\u2400\u241b\u2421"},
          Case{"directions", "\u202ea\u2028", {0, 1, 2, 3}, U"\ufffda\ufffd"},
          Case{"malformed", "\xff\xe4x", {0, 1, 2, 3}, U"\ufffd\ufffdx"}}) {
        std::vector<int> columns;
        std::u32string shown;
        const auto cells = cellsOfRow(row.bytes, 100);
        for (const LogCell& cell : cells) {
            columns.push_back(cell.column);
            shown += cell.shown;
        }
        columns.push_back(cells.back().column + cells.back().width);
        EXPECT_EQ(columns, row.columns) << row.name;
        EXPECT_EQ(shown, row.shown) << row.name;
    }
    EXPECT_EQ(cellsOfRow(std::string(1U << 20U, 'x'), 80).size(), 81U) << "none beyond the end";
    EXPECT_TRUE(cellsOfRow("", 80).empty());
}

} // namespace
} // namespace orrery
