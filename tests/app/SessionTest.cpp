// Whole sessions at the window: what a scientist does between a sample and its plot.
#include "app/WindowFixture.h"
#include "platform/qt/QtGlSurface.h"

#include <malloc.h>

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QMessageBox>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTableView>
#include <QTimer>
#include <QTreeView>
#include <filesystem>
#include <fstream>

namespace orrery::test {
namespace {

using SessionTest = WindowTest;

void click(const QWidget& widget) {
    const QPoint point = centreOnScreen(widget);
    xdotool({"mousemove", QString::number(point.x()), QString::number(point.y()), "sleep", "0.05", "click", "1"});
}

QPoint rowOnScreen(const QAbstractItemView& view, const QModelIndex& index) {
    return onScreen(*view.viewport(), view.visualRect(index).center());
}

/// The node of that name below the index, with its branch open.
QModelIndex nodeNamed(QTreeView& outline, const QString& name, const QModelIndex& parent = {}) {
    const QAbstractItemModel& model = *outline.model();
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex child = model.index(row, 0, parent);
        if (child.data().toString() == name) {
            outline.setExpanded(child, true);
            outline.scrollTo(child);
            return child;
        }
    }
    throw std::runtime_error("no node " + name.toStdString());
}

void chooseRole(DocumentWindow& window, const QString& chooser, int role) {
    auto* box = window.findChild<QComboBox*>(chooser);
    ASSERT_NE(box, nullptr);
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Down); // opens the list, at the present role
    ASSERT_TRUE(waitFor([&] { return box->view()->isVisible(); }));
    for (int i = box->currentIndex(); i < role; ++i) {
        QTest::keyClick(box->view(), Qt::Key_Down);
    }
    QTest::keyClick(box->view(), Qt::Key_Return);
    ASSERT_EQ(box->currentIndex(), role);
}

QImage picture(DocumentWindow& window) {
    return window.findChild<QtGlSurface*>()->grabFramebuffer();
}

TEST_F(SessionTest, APortIsDraggedTypedUndoneSavedRunAndSeen) {
    DocumentWindow& window = open("crop-two-steppers.orrery");
    MyDocument& document = window.document();
    auto& outline = find<QTreeView>(window, "outlineView");
    const QModelIndex water = nodeNamed(outline, "Water balance", nodeNamed(outline, "Soil"));
    const QModelIndex port = nodeNamed(outline, "soil water", nodeNamed(outline, "outputs", water));
    auto& outputs = find<QTableView>(window, "outputTable");
    xdotool(dragArguments(rowOnScreen(outline, port), centreOnScreen(*outputs.viewport())));
    ASSERT_TRUE(waitFor([&] { return outputs.model()->rowCount() == 1; }));
    EXPECT_EQ(outputs.model()->index(0, 0).data().toString(), "/Farm/Soil/Water balance/soil water");
    EXPECT_TRUE(window.isWindowModified());

    const QModelIndex file = outputs.model()->index(0, 1);
    const QPoint cell = rowOnScreen(outputs, file);
    xdotool({"mousemove", QString::number(cell.x()), QString::number(cell.y()), "click", "--repeat", "2", "1", "sleep",
             "0.2", "type", "--delay", "20", "water.txt"});
    xdotool({"key", "Return"});
    EXPECT_TRUE(waitFor([&] { return file.data().toString() == "water.txt"; }));
    xdotool({"key", "ctrl+z"});
    EXPECT_TRUE(waitFor([&] { return file.data().toString().isEmpty(); }));
    xdotool({"key", "ctrl+s"});
    ASSERT_TRUE(waitFor([&] { return !window.isWindowModified(); }));

    xdotool({"key", "ctrl+r"});
    ASSERT_TRUE(waitFor([&] { return document.runControl().outcome().isWhole(); }));
    xdotool({"key", "ctrl+2"});
    ASSERT_TRUE(waitFor([&] { return find<QComboBox>(window, "sweepRole2").isVisible(); }));
    const QImage empty = picture(window);
    chooseRole(window, "sweepRole2", 1);
    click(find<QCheckBox>(window, "responseInclude0"));
    ASSERT_TRUE(waitFor([&] { return picture(window) != empty; }));
    const QImage curves = picture(window);
    chooseRole(window, "sweepRole0", 2);
    ASSERT_TRUE(waitFor([&] { return picture(window) != curves; }));
    EXPECT_EQ(document.plotLayout().dimensions, 3U);
}

TEST_F(SessionTest, TheButtonStartsARunAndAbortsIt) {
    DocumentWindow& window = open("crop-two-steppers.orrery");
    MyDocument& document = window.document();
    document.editEntry(PortList::Steppers, 0, "step", "0.0005"); // millions of rows: never at its end by itself
    document.saveToFile(*document.filePath());
    auto& button = find<QPushButton>(window, "startStopButton");
    auto& wheel = find<QProgressBar>(window, "progressWheel");
    click(button);
    ASSERT_TRUE(waitFor([&] { return wheel.isVisible() && button.isChecked(); }));
    click(button);
    ASSERT_TRUE(waitFor([&] { return document.runControl().state() == RunControl::State::Idle; }));
    EXPECT_TRUE(document.runControl().isAborted());
    EXPECT_TRUE(document.independentVariables().empty());
    EXPECT_FALSE(button.isChecked());
    EXPECT_FALSE(wheel.isVisible());
}

TEST_F(SessionTest, AnEditedSetupAsksBeforeItsRun) {
    DocumentWindow& window = open("crop-single.orrery");
    window.document().editText(setup_key::runLength, "30");
    const auto answer = [&](const char* key) {
        QTimer::singleShot(0, [key] {
            EXPECT_TRUE(waitFor([] {
                const QWidget* alert = QApplication::activeModalWidget();
                return alert != nullptr && alert->isActiveWindow();
            }));
            xdotool({"key", key});
        });
        window.document().runSimulation();
    };
    answer("Escape");
    EXPECT_EQ(window.document().runControl().state(), RunControl::State::Idle);
    EXPECT_TRUE(window.isWindowModified());
    answer("Return"); // Save
    ASSERT_TRUE(waitFor([&] { return window.document().runControl().outcome().isWhole(); }));
    EXPECT_FALSE(window.isWindowModified());
}

TEST_F(SessionTest, ResultsGoToTheCompanionOrASheetTellsThatThereIsNone) {
    DocumentWindow& window = open("crop-single.orrery");
    EXPECT_FALSE(action(window, "actionSendToDorado").isEnabled());
    const std::string table = window.document().resultTablePath(); // comes and goes by another program's doing
    std::ofstream(table) << "day\n";
    EXPECT_TRUE(waitFor([&] { return action(window, "actionSendToDorado").isEnabled(); }));
    std::filesystem::remove(table);
    EXPECT_TRUE(waitFor([&] { return !action(window, "actionSendToDorado").isEnabled(); }));
    run(window);
    ASSERT_TRUE(action(window, "actionSendToDorado").isEnabled());
    action(window, "actionSendToDorado").trigger();
    QMessageBox* sheet = nullptr;
    ASSERT_TRUE(waitFor([&] { return (sheet = window.findChild<QMessageBox*>("alert")) != nullptr; }));
    EXPECT_EQ(sheet->text(), "Could not open communication with Dorado.");
    EXPECT_EQ(sheet->informativeText(), "Please start Dorado if it is not already running.");
    sheet->close();

    QProcess receiver;
    receiver.start(ORRERY_BIN "/dorado-receiver", {"--once"});
    ASSERT_TRUE(receiver.waitForStarted());
    QtNamedServices names;
    const auto isThere = std::make_shared<bool>(false);
    ASSERT_TRUE(waitFor([&] {
        names.findRootProxy("Dorado Server", [isThere](const auto& found) { *isThere = *isThere || found; });
        return *isThere;
    }));
    action(window, "actionSendToDorado").trigger();
    ASSERT_TRUE(waitFor([&] { return receiver.state() == QProcess::NotRunning; }));
    EXPECT_EQ(receiver.readAllStandardOutput().toStdString(), window.document().resultTablePath() + "\n");
}

TEST_F(SessionTest, EveryControlHasANameForScreenReadersAndOneForTests) {
    DocumentWindow& window = open("crop-two-steppers.orrery");
    run(window);
    for (const char* tab : {"actionShowSetup", "actionShowPlot"}) {
        action(window, tab).trigger();
        for (QWidget* control : window.findChildren<QWidget*>()) {
            if (!control->isVisible() || (control->focusPolicy() & Qt::TabFocus) == 0) continue;
            const bool insideAnother = control->parentWidget()->focusProxy() == control ||
                                       qobject_cast<QAbstractSpinBox*>(control->parentWidget()) != nullptr;
            if (insideAnother || control->objectName().startsWith("qt_")) continue; // Qt's own part of a control
            EXPECT_NE(control->objectName(), "") << control->metaObject()->className();
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(control);
            ASSERT_NE(accessible, nullptr);
            EXPECT_NE(accessible->text(QAccessible::Name), "") << control->objectName().toStdString();
        }
    }
}

int openDescriptors() {
    int count = 0;
    for ([[maybe_unused]] const auto& each : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

TEST_F(SessionTest, OpeningAndClosingManyDocumentsLeavesNothingBehind) {
    const std::string sample = sampleCopy("crop-two-steppers.orrery");
    const auto openAndClose = [&](int count) {
        for (int i = 0; i < count; ++i) {
            DocumentWindow* window = controller->documentController().openDocument(QString::fromStdString(sample));
            if (i % 5 == 0) action(*window, "actionShowPlot").trigger(); // makes a GL context, which takes its time
            action(*window, "actionAnimate").trigger();
            QCoreApplication::processEvents();
            window->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QCoreApplication::processEvents();
        }
    };
    openAndClose(50);
    const int descriptors = openDescriptors();
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
