#include "platform/qt/AlertBox.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtText.h"
#include "support/OffscreenTest.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <memory>

namespace orrery {
namespace {

class AlertsTest : public test::OffscreenTest {
protected:
    AlertsTest() { m_window.show(); }
    void show(const AlertText& text, const std::string& name) {
        m_alerts.beginSheet(text,
                            [this, name](std::size_t button) { m_told.push_back(name + std::to_string(button)); });
    }
    QList<AlertBox*> sheets() {
        QTest::qWait(0); // those that are closed are deleted
        QList<AlertBox*> boxes;
        for (QObject* child : m_window.children())
            if (auto* box = dynamic_cast<AlertBox*>(child)) boxes += box;
        return boxes;
    }

    QWidget m_window;
    QtAlerts m_alerts{&m_window};
    std::vector<std::string> m_told; // who was told which answer
};

TEST_F(AlertsTest, ReturnAndEscapeLoseNothing) {
    const AlertText question{"Replace it?", "", {"Replace", "Cancel", "Save As…"}};
    AlertText save = question;
    save.buttons = {"Save", "Cancel", "Don't Save"};
    save.safeButton = 0;
    const std::vector<std::pair<AlertText, std::string>> cases = {
        {question, "1 1"}, {save, "0 1"}, {{"Done.", ""}, "0 0"}};
    for (const auto& [text, expected] : cases) {
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
            show(text, "");
            QTest::keyClick(sheets().at(0), key);
            QTimer::singleShot(0, qApp, [key] { QTest::keyClick(QApplication::activeModalWidget(), key); });
            EXPECT_EQ(std::to_string(m_alerts.runModal(text)), m_told.back()) << "alone, too";
        }
        EXPECT_EQ(m_told.at(0) + " " + m_told.at(1), expected) << text.message;
        m_told.clear();
    }
}

TEST_F(AlertsTest, ButtonsHaveLettersOfTheirOwn) {
    show({"Save it?", "", {"Save", "Cancel", "Save As…"}}, "");
    std::vector<QString> titles;
    for (const auto* button : sheets().at(0)->buttons())
        titles.push_back(button->text());
    EXPECT_THAT(titles, testing::ElementsAre("&Save", "&Cancel", "S&ave As…"));
    QTest::keyClick(sheets().at(0), Qt::Key_A);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !m_told.empty(); }));
    EXPECT_THAT(m_told, testing::ElementsAre("2"));
}

TEST_F(AlertsTest, AMatterHasOneSheet) {
    const AlertText broken{"The model could not be read.", "Line 3"};
    AlertText otherwise{"The model could not be imported.", "Line 4"};
    show(broken, "first");
    show({broken.message, "Line 4"}, "second");
    ASSERT_EQ(sheets().size(), 1);
    EXPECT_EQ(sheets().at(0)->informativeText(), "Line 4");
    show(otherwise, "third");
    ASSERT_EQ(sheets().size(), 2) << "another message is another matter unless it names the same one";
    otherwise.matter = broken.message;
    otherwise.buttons = {"Choose…", "Cancel"};
    show(otherwise, "question");
    ASSERT_EQ(sheets().size(), 2);
    EXPECT_THAT(m_told, testing::ElementsAre("first0", "second0"));
    m_told.clear();
    otherwise.informative = "Line 5";
    show(otherwise, "again");
    EXPECT_THAT(m_told, testing::ElementsAre("question1")) << "goes unanswered: as cancelled";
    sheets().at(0)->findChild<QPushButton*>("alertButtonChoose…")->click();
    EXPECT_THAT(m_told, testing::ElementsAre("question1", "again0"));
    EXPECT_EQ(sheets().size(), 1);
}

TEST_F(AlertsTest, TextIsAsWideAsItNeedsAndPathsBreakBehindASlash) {
    const auto widthOf = [this](const std::string& informative) {
        show({"The file could not be read.", informative}, "");
        const int width = sheets().at(0)->findChild<QLabel*>("qt_msgbox_informativelabel")->width();
        EXPECT_EQ(coreText(sheets().at(0)->informativeText().remove(QChar(0x200b))), informative);
        sheets().at(0)->close();
        return width;
    };
    const QString line = QString("words of a sentence ").repeated(3);
    EXPECT_GE(widthOf(coreText(line)), QLabel().fontMetrics().horizontalAdvance(line.trimmed()));
    std::string path;
    for (int i = 0; i < 40; ++i)
        path += "/a-folder-with-a-long-name";
    const int widest = widthOf(coreText(line.repeated(20)));
    EXPECT_LE(widthOf(path), widest + 20);
    EXPECT_LE(widthOf(std::string(4000, 'x')), widest + 20);
}

} // namespace
} // namespace orrery
