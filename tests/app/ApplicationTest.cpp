// The application above its documents: start panel, quitting, dropped files, panels, re-activation, a second start.
#include "app/PreferencesPanel.h"
#include "app/ShellTest.h"
#include "app/StartPanel.h"
#include "platform/Files.h"

#include <QCheckBox>
#include <QListWidget>
#include <QMimeData>
#include <QProcess>
#include <QPushButton>
#include <QSplitter>
#include <QTextBrowser>
#include <QTimer>
#include <csignal>
#include <filesystem>
#include <new>
#include <stdexcept>

namespace orrery::test {
namespace {

class ApplicationTest : public ShellTest {
protected:
    /// The program as a user starts it, with a home and a runtime directory of the test's.
    std::unique_ptr<QProcess> start(const QStringList& arguments) {
        std::filesystem::create_directories(files.path() + "run");
        std::filesystem::permissions(files.path() + "run", std::filesystem::perms::owner_all);
        auto environment = QProcessEnvironment::systemEnvironment();
        // The GL driver, unloaded at the program's end, would count as a leak without a name.
        environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":detect_leaks=0");
        environment.insert("HOME", qtPath(files.path()));
        environment.insert("XDG_CONFIG_HOME", qtPath(files.path() + "config"));
        environment.insert("XDG_RUNTIME_DIR", qtPath(files.path() + "run"));
        auto program = std::make_unique<QProcess>();
        program->setProcessEnvironment(environment);
        program->setWorkingDirectory(qtPath(files.path()));
        program->start(ORRERY_BIN "/orrery", arguments);
        EXPECT_TRUE(program->waitForStarted());
        return program;
    }
    static QByteArray outputOf(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.start(program, arguments);
        process.waitForFinished();
        return process.readAllStandardOutput();
    }
    static int windowsNamed(const QString& name) {
        return static_cast<int>(outputOf("xdotool", {"search", "--onlyvisible", "--name", name}).count('\n'));
    }
    static bool ended(const QProcess& program) {
        return waitFor([&] { return program.state() == QProcess::NotRunning; });
    }
};

TEST_F(ApplicationTest, TheStartPanelStandsInForDocumentsAndItsSamplesAreCopiesThatRunWhereTheyAreSaved) {
    controller->showStartPanelWhenEmpty();
    StartPanel& panel = controller->startPanel();
    EXPECT_TRUE(panel.isVisible());
    EXPECT_TRUE(controller->documentController().documents().empty());
    const auto openSample = [&](const char* name) {
        auto& samples = find<QListWidget>(panel, "samples");
        emit samples.itemActivated(samples.findItems(name, Qt::MatchExactly).value(0));
        activate(*windows().back());
        EXPECT_FALSE(panel.isVisible());
        return QPointer<DocumentWindow>(windows().back());
    };
    const QPointer<DocumentWindow> window = openSample("insect-blocks.orrery");
    const QPointer<DocumentWindow> second = openSample("insect-blocks.orrery");
    EXPECT_EQ(coreText(window->windowTitle()), "insect-blocks copy[*]");
    EXPECT_EQ(coreText(second->windowTitle()), "insect-blocks copy 2[*]");
    auto& button = find<QPushButton>(*window, "startStopButton");
    QTest::mouseClick(&button, Qt::LeftButton);
    chooseFile(*window, "saveSetupPanel", "");
    EXPECT_EQ(window->document().runControl().state(), RunControl::State::Idle) << "there is nothing to run";
    EXPECT_FALSE(button.isChecked());
    QTest::mouseClick(&button, Qt::LeftButton);
    chooseFile(*window, "saveSetupPanel", files.path() + "mine.orrery");
    ASSERT_TRUE(waitFor([&] { return window->document().runControl().outcome().isWhole(); }, 60'000));
    EXPECT_TRUE(fileExists(files.path() + "insect-larvae.txt")) << "results beside the user's copy";
    window->close();
    EXPECT_TRUE(waitFor([&] { return window == nullptr; })) << "nothing to ask about";
    second->close();
    EXPECT_TRUE(waitFor([&] { return panel.isVisible(); }));
    EXPECT_EQ(find<QListWidget>(panel, "recentSetups").count(), 1) << "a sample is not one of the user's setups";
}

TEST_F(ApplicationTest, QuitAsksForEachEditedDocumentAndCancelKeepsAll) {
    DocumentWindow& first = open("crop-single.orrery");
    DocumentWindow& second = open("insect-single.orrery");
    openNew();
    edit(first, "42");
    edit(second, "43");
    action(first, "actionQuit").trigger();
    answer(first, "crop-single", "Don't Save");
    answer(second, "insect-single", "Cancel");
    EXPECT_EQ(windows().size(), 3U);
    EXPECT_TRUE(first.isWindowModified());
    action(first, "actionQuit").trigger();
    answer(first, "crop-single", "Save");
    edit(first, "44"); // while the second is asked about
    answer(second, "insect-single", "Don't Save");
    answer(first, "crop-single", "Don't Save");
    EXPECT_TRUE(windows().empty());
    EXPECT_FALSE(controller->startPanel().isVisible());
}

TEST_F(ApplicationTest, WithoutATemporaryDirectoryOnlyRunsAndResultsAreOff) {
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", "/nonexistent");
    ApplicationServices without(std::make_unique<MemoryUserDefaults>());
    qputenv("TMPDIR", before);
    AppController other(without);
    DocumentWindow* window = other.documentController().openDocument(sampleCopy("crop-single.orrery"));
    ASSERT_NE(window, nullptr);
    activate(*window);
    ASSERT_TRUE(waitFor([&] { return !action(*window, "actionRun").isEnabled(); }));
    EXPECT_FALSE(find<QWidget>(*window, "startStopButton").isEnabled());
    EXPECT_TRUE(find<QWidget>(*window, "runState").toolTip().contains("/nonexistent"));
    edit(*window, "42"); // all else works
    window->document().updateChangeCount(ChangeKind::Cleared);
}

TEST_F(ApplicationTest, WhatFailsInASlotOrATimerIsASheetAndTheDocumentsStay) {
    DocumentWindow& window = open("crop-single.orrery");
    edit(window, "42");
    QTimer::singleShot(0, qApp, [] { throw std::runtime_error("the slot broke"); });
    answer(window, "The last operation failed", "OK");
    const auto timer = services->runLoop().after({}, [] { throw std::bad_alloc(); });
    ASSERT_TRUE(waitFor([&] { return alertOf(window) != nullptr; }));
    EXPECT_TRUE(alertOf(window)->informativeText().contains("not enough memory"));
    answer(window, "The last operation failed", "OK");
    EXPECT_TRUE(window.isWindowModified());
}

TEST_F(ApplicationTest, FilesDroppedOnAnyControlOpen) {
    DocumentWindow& window = openNew();
    sampleCopy("crop-single.orrery");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(qtPath(files.path() + "crop-single.orrery")), QUrl("http://example.org/x")});
    for (const char* name : {"runLength", "outputTable"}) {
        QWidget& target = find<QWidget>(window, name);
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &drop);
        EXPECT_TRUE(drop.isAccepted());
        ASSERT_TRUE(waitFor([&] { return windows().size() == 2; })) << name;
        windows().back()->close();
    }
    EXPECT_EQ(find<QLineEdit>(window, "runLength").text(), "100");
}

TEST_F(ApplicationTest, EachCallShowsReleaseNotesOfItsOwn) {
    DocumentWindow& window = openNew();
    action(window, "actionReleaseNotes").trigger();
    action(window, "actionReleaseNotes").trigger();
    EXPECT_EQ(std::ranges::count_if(windowsCalled("ReleaseNotes"), &QWidget::isVisible), 2);
    action(window, "actionHelp").trigger();
    QWidget* page = nullptr;
    ASSERT_TRUE(waitFor([&] {
        page = QApplication::activeWindow();
        return page != nullptr && page->windowTitle() == "Orrery Help";
    }));
    auto& browser = find<QTextBrowser>(*page, "webView");
    emit browser.anchorClicked(QUrl("docs/setup-format.md"));
    EXPECT_TRUE(browser.toPlainText().contains("ModelPath"));
    emit browser.anchorClicked(QUrl("model-format.md"));
    EXPECT_TRUE(browser.toPlainText().contains("database"));
}

TEST_F(ApplicationTest, PreferencesAreOnePanelWhoseChoicesWork) {
    DocumentWindow& window = openNew();
    action(window, "actionPreferences").trigger();
    action(window, "actionPreferences").trigger();
    const QWidgetList panels = windowsCalled("preferences");
    ASSERT_EQ(panels.size(), 1);
    EXPECT_TRUE(find<QLineEdit>(*panels.front(), "enginePath").text().endsWith("/Zephyr"));
    window.resize(1100, 750);
    find<QSplitter>(window, "mainSplitter").setSizes({300, 700});
    window.close();
    EXPECT_EQ(openNew().size(), QSize(1100, 750));
    find<QCheckBox>(*panels.front(), "restoreLayout").setChecked(false);
    EXPECT_NE(openNew().size(), QSize(1100, 750));
}

TEST_F(ApplicationTest, ComingBackReadsChangedModelsAgain) {
    DocumentWindow& first = open("crop-single.orrery");
    DocumentWindow& second = open("crop-one-stepper.orrery");
    openNew();
    const auto before = first.document().modelModification();
    std::filesystem::last_write_time(files.path() + "crop.xml",
                                     std::filesystem::file_time_type::clock::now() + std::chrono::seconds(5));
    const auto other = start({"--new-instance"}); // takes the focus
    ASSERT_TRUE(waitFor([] { return QGuiApplication::applicationState() != Qt::ApplicationActive; }));
    EXPECT_EQ(first.document().modelModification(), before);
    other->terminate();
    ASSERT_TRUE(ended(*other));
    activate(first);
    EXPECT_TRUE(waitFor([&] { return first.document().modelModification() != before; }));
    EXPECT_EQ(second.document().modelModification(), first.document().modelModification());
}

TEST_F(ApplicationTest, ASecondStartHandsItsFilesToTheFirst) {
    sampleCopy("crop-single.orrery");
    const auto first = start({"crop-single.orrery"});
    ASSERT_TRUE(waitFor([] { return windowsNamed("^crop-single.orrery") == 1; }));
    const auto second = start({"insect-single.orrery"});
    ASSERT_TRUE(ended(*second));
    EXPECT_EQ(second->exitCode(), 0);
    EXPECT_TRUE(waitFor([] { return windowsNamed("^insect-single.orrery") == 1; }));
    ::kill(static_cast<pid_t>(first->processId()), SIGSTOP); // hangs
    const auto third = start({"insect-one-stepper.orrery"});
    EXPECT_TRUE(waitFor([] { return windowsNamed("^insect-one-stepper.orrery") == 1; }));
    first->kill(); // leaves its socket behind
    third->terminate();
    ASSERT_TRUE(ended(*first) && ended(*third));
    const auto fourth = start({"crop-single.orrery"});
    EXPECT_TRUE(waitFor([] { return windowsNamed("^crop-single.orrery") == 1; }));
    fourth->terminate();
    EXPECT_TRUE(ended(*fourth));
}

TEST_F(ApplicationTest, ATerminationSignalEndsTheEngineToo) {
    const std::string setup = slowSetup();
    const auto program = start({qtPath(setup)});
    ASSERT_TRUE(waitFor([] { return windowsNamed("^slow.orrery") == 1; }));
    xdotool({"search", "--onlyvisible", "--name", "^slow.orrery", "windowactivate", "--sync", "key", "ctrl+r"});
    QByteArray engine;
    ASSERT_TRUE(waitFor([&] {
        return !(engine = outputOf("pgrep", {"-P", QString::number(program->processId())}).trimmed()).isEmpty();
    }));
    program->terminate();
    ASSERT_TRUE(ended(*program));
    EXPECT_EQ(program->exitCode(), 128 + SIGTERM);
    EXPECT_FALSE(std::filesystem::exists("/proc/" + engine.toStdString()));
}

struct StartCase {
    QStringList arguments;
    const char* platform;
    int exitCode;
    const char* output;
};

TEST_F(ApplicationTest, AStartWithoutADisplayIsAnsweredInOneLine) {
    const QByteArray display = qgetenv("DISPLAY");
    qunsetenv("DISPLAY");
    for (const StartCase& row :
         {StartCase{{}, "xcb", 1, "no display can be reached"}, StartCase{{}, "offscreen", 1, "shows no windows"},
          StartCase{{"--help"}, "xcb", 0, "Usage: orrery"}, StartCase{{"--version"}, "xcb", 0, "orrery 0."},
          StartCase{{"--nonsense"}, "xcb", 2, "--help"}}) {
        SCOPED_TRACE(row.output);
        qputenv("QT_QPA_PLATFORM", row.platform);
        const auto program = start(row.arguments);
        EXPECT_TRUE(ended(*program));
        EXPECT_EQ(program->exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program->exitCode(), row.exitCode);
        const QByteArray errors = program->readAllStandardError();
        EXPECT_TRUE((program->readAllStandardOutput() + errors).contains(row.output)) << errors.toStdString();
        EXPECT_LE(errors.count('\n'), 1) << errors.toStdString();
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("DISPLAY", display);
}

} // namespace
} // namespace orrery::test
