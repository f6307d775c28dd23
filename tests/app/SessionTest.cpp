// Whole sessions at the window: what a scientist does between a sample and its results.
#include "app/SetupWindow.h"
#include "platform/qt/QtNamedServices.h"
#include "platform/qt/QtWaitPanel.h"

#include <malloc.h>

#include <QMessageBox>
#include <QProcess>
#include <QProgressDialog>
#include <QPushButton>
#include <filesystem>
#include <fstream>

namespace orrery::test {
namespace {

using SessionTest = SetupWindowTest;

TEST_F(SessionTest, APortIsDraggedTypedUndoneSavedAndRun) {
    openSample("crop-two-steppers.orrery");
    PortTableView& outputs = table("outputTable");
    xdotool(dragArguments(nodePoint("Soil/Water balance/outputs/soil water"), rowPoint(outputs, 0)));
    ASSERT_TRUE(waitFor([&] { return outputs.model()->rowCount() == 1; }));
    EXPECT_EQ(outputs.model()->index(0, 0).data().toString(), "/Farm/Soil/Water balance/soil water");
    EXPECT_TRUE(window->isWindowModified());

    const QModelIndex file = outputs.model()->index(0, 1);
    clickAt(outputs.viewport()->mapToGlobal(outputs.visualRect(file).center()),
            {"click", "--repeat", "2", "1", "sleep", "0.2", "type", "--delay", "20", "water.txt"});
    xdotool({"key", "Return"});
    EXPECT_TRUE(waitFor([&] { return file.data().toString() == "water.txt"; }));
    xdotool({"key", "ctrl+z"});
    EXPECT_TRUE(waitFor([&] { return file.data().toString().isEmpty(); }));
    xdotool({"key", "ctrl+s"});
    ASSERT_TRUE(waitFor([&] { return !window->isWindowModified(); }));

    xdotool({"key", "ctrl+r"});
    ASSERT_TRUE(waitFor([&] { return window->document().runControl().outcome().isWhole(); }));
    xdotool({"key", "ctrl+2"});
    EXPECT_TRUE(waitFor([&] { return find<QComboBox>(*window, "sweepRole2").isVisible(); }));
}

TEST_F(SessionTest, ResultsGoToTheCompanionOrASheetTellsThatThereIsNone) {
    DocumentWindow& sender = open("crop-single.orrery");
    EXPECT_FALSE(action(sender, "actionSendToDorado").isEnabled());
    const std::string table = sender.document().reading().tablePath(); // comes and goes by another program's doing
    std::ofstream(table) << "day\n";
    EXPECT_TRUE(waitFor([&] { return action(sender, "actionSendToDorado").isEnabled(); }));
    std::filesystem::remove(table);
    EXPECT_TRUE(waitFor([&] { return !action(sender, "actionSendToDorado").isEnabled(); }));
    run(sender);
    ASSERT_TRUE(action(sender, "actionSendToDorado").isEnabled());
    action(sender, "actionSendToDorado").trigger();
    ASSERT_TRUE(waitFor([&] { return sender.findChild<QMessageBox*>("alert") != nullptr; }));
    auto& sheet = find<QMessageBox>(sender, "alert");
    EXPECT_EQ(sheet.informativeText(), "Please start Dorado if it is not already running.");
    sheet.close();

    QProcess receiver;
    receiver.start(ORRERY_BIN "/dorado-receiver", {"--once"});
    ASSERT_TRUE(receiver.waitForStarted());
    QtNamedServices names;
    const auto isThere = std::make_shared<bool>(false);
    ASSERT_TRUE(waitFor([&] {
        names.findRootProxy("Dorado Server", [isThere](const auto& found) { *isThere = *isThere || found; });
        return *isThere;
    }));
    action(sender, "actionSendToDorado").trigger();
    ASSERT_TRUE(waitFor([&] { return receiver.state() == QProcess::NotRunning; }));
    EXPECT_EQ(receiver.readAllStandardOutput().toStdString(), sender.document().reading().tablePath() + "\n");
}

TEST_F(SessionTest, ALongWaitShowsItselfTakesCancelAndLetsNothingElseIn) {
    DocumentWindow& waiting = openNew();
    int ticks = 0;
    const auto timer = services->runLoop().repeat(std::chrono::milliseconds(1), [&ticks] { ++ticks; });
    ASSERT_TRUE(waitFor([&] { return ticks > 0; }));
    QtWaitPanel panel(&waiting);
    panel.begin("Reading");
    EXPECT_EQ(waiting.findChild<QProgressDialog*>("waitPanel"), nullptr) << "a short wait shows nothing";
    const int ticksBefore = ticks;
    bool goesOn = true;
    for (const QDeadlineTimer deadline(20'000); goesOn && !deadline.hasExpired();) {
        goesOn = panel.update(0.5);
        if (auto* shown = waiting.findChild<QProgressDialog*>("waitPanel")) {
            QTest::mouseClick(&waiting, Qt::LeftButton); // blocked by the panel
            QTest::mouseClick(shown->findChild<QPushButton*>(), Qt::LeftButton);
        }
    }
    EXPECT_FALSE(goesOn);
    EXPECT_EQ(ticks, ticksBefore);
    panel.end();
    EXPECT_TRUE(waitFor([&] { return ticks > ticksBefore; }));
    EXPECT_EQ(waiting.findChild<QProgressDialog*>("waitPanel"), nullptr);
}

auto openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(SessionTest, OpeningAndClosingManyDocumentsLeavesNothingBehind) {
    const std::string sample = sampleCopy("crop-two-steppers.orrery");
    const auto openAndClose = [&](int count) {
        for (int i = 0; i < count; ++i) {
            DocumentWindow* each = controller->documentController().openDocument(QString::fromStdString(sample));
            if (i % 5 == 0) action(*each, "actionShowPlot").trigger(); // makes a GL context, which takes its time
            action(*each, "actionAnimate").trigger();
            QCoreApplication::processEvents();
            each->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
        }
    };
    openAndClose(50);
    const auto descriptors = openDescriptors();
    const auto windows = QApplication::topLevelWidgets().size();
    const auto memory = ::mallinfo2().uordblks;
    openAndClose(450);
    EXPECT_TRUE(controller->documentController().windows().empty());
    EXPECT_LE(openDescriptors(), descriptors);
    EXPECT_LE(QApplication::topLevelWidgets().size(), windows);
    EXPECT_LT(::mallinfo2().uordblks, memory + 450UL * 4096)
        << "a document with its window takes a hundred times as much";
}

} // namespace
} // namespace orrery::test
