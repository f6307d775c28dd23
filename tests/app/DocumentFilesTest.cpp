// A document's file at its window: names, saving, reverting, closing.
#include "app/document/DocumentFiles.h"

#include "app/ShellTest.h"
#include "app/StartPanel.h"
#include "platform/Files.h"
#include "run/lock/RunLock.h"

#include <QListView>
#include <QMenu>
#include <filesystem>

namespace orrery::test {
namespace {

using DocumentFilesTest = ShellTest;

TEST_F(DocumentFilesTest, UntitledDocumentsTakeTheSmallestFreeNumberAndAskForANameWhenTheyAreSaved) {
    DocumentWindow& first = openNew();
    EXPECT_EQ(coreText(openNew().windowTitle()), "Untitled 2[*]");
    first.close();
    DocumentWindow& window = openNew();
    EXPECT_EQ(coreText(window.windowTitle()), "Untitled[*]");
    edit(window, "42");
    action(window, "actionSave").trigger();
    chooseFile(window, "saveSetupPanel", "");
    EXPECT_FALSE(window.document().file().path());
    action(window, "actionSave").trigger();
    chooseFile(window, "saveSetupPanel", files.path() + "mine");
    EXPECT_EQ(window.document().file().path(), files.path() + "mine.orrery");
    EXPECT_EQ(coreText(window.windowTitle()), "mine.orrery[*]");
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_NE(readWholeFile(files.path() + "mine.orrery").find("<RunLength>42<"), std::string::npos);
    EXPECT_EQ(controller->documentController().recentDocuments().paths().front(), files.path() + "mine.orrery");
}

TEST_F(DocumentFilesTest, SaveTakesWhatIsStillBeingTyped) {
    DocumentWindow& window = open("crop-single.orrery");
    auto& field = find<QLineEdit>(window, "runLength");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, "77");
    action(window, "actionSave").trigger();
    EXPECT_NE(readWholeFile(files.path() + "crop-single.orrery").find("<RunLength>77<"), std::string::npos);
    EXPECT_FALSE(window.isWindowModified());
}

TEST_F(DocumentFilesTest, SaveAsRefusesTheFileOfAnotherWindow) {
    DocumentWindow& other = open("crop-single.orrery");
    DocumentWindow& window = open("insect-single.orrery");
    const std::string before = readWholeFile(*other.document().file().path());
    action(window, "actionSaveAs").trigger();
    ASSERT_TRUE(waitFor([&] { return window.findChild<QFileDialog*>("saveSetupPanel") != nullptr; }));
    auto& panel = find<QFileDialog>(window, "saveSetupPanel");
    panel.setOption(QFileDialog::DontConfirmOverwrite);
    const auto& list = find<QListView>(panel, "listView"); // selects the suggestion once it has been read
    ASSERT_TRUE(waitFor([&] { return list.selectionModel()->hasSelection(); }));
    chooseFile(window, "saveSetupPanel", files.path() + "crop-single.orrery");
    answer(window, "open in another window", "OK");
    EXPECT_EQ(readWholeFile(*other.document().file().path()), before);
    EXPECT_EQ(window.document().file().path(), files.path() + "insect-single.orrery");
}

TEST_F(DocumentFilesTest, SaveAsElsewhereShowsThePathOfTheSameModel) {
    DocumentWindow& window = open("crop-single.orrery");
    std::filesystem::create_directories(files.path() + "other");
    action(window, "actionSaveAs").trigger();
    chooseFile(window, "saveSetupPanel", files.path() + "other/mine.orrery");
    EXPECT_EQ(coreText(find<QLineEdit>(window, "modelPath").text()), files.path() + "crop.xml");
    EXPECT_FALSE(window.isWindowModified());
}

TEST_F(DocumentFilesTest, WhatOthersDidToTheFileIsToldBeforeItIsWritten) {
    namespace fs = std::filesystem;
    KnownFile otherOrrery;
    struct Case {
        const char* name;
        std::function<void(const std::string& path)> act;
        const char* message;
        const char* runLength;
    };
    const std::vector<Case> cases = {
        {"changed in place", [](auto& path) { std::ofstream(path) << "theirs"; }, "was changed by another program",
         "41"},
        {"removed", [](auto& path) { fs::remove(path); }, "is no longer there", "42"},
        {"saved in another Orrery",
         [&](auto& path) {
             otherOrrery = replaceKnownFile(path, "theirs");
             otherOrrery.claim();
         },
         "is open in another Orrery", "43"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        DocumentWindow& window = open("crop-single.orrery");
        const std::string path = *window.document().file().path();
        row.act(path);
        const std::string theirs = fileExists(path) ? readWholeFile(path) : "";
        edit(window, row.runLength);
        action(window, "actionSave").trigger();
        answer(window, row.message, "Cancel");
        EXPECT_EQ(fileExists(path) ? readWholeFile(path) : "", theirs);
        EXPECT_TRUE(window.isWindowModified());
        action(window, "actionSave").trigger();
        answer(window, row.message, "Save");
        EXPECT_NE(readWholeFile(path).find(std::string(">") + row.runLength + "<"), std::string::npos);
        window.close();
    }
}

TEST_F(DocumentFilesTest, AFileThatAnotherOrreryHasOpenIsToldWhenItOpens) {
    std::string bytes;
    KnownFile otherOrrery = KnownFile::read(sampleCopy("crop-single.orrery"), bytes);
    otherOrrery.claim();
    DocumentWindow& window = open("crop-single.orrery");
    answer(window, "“crop-single.orrery” is open in another Orrery.", "OK");
    otherOrrery = {};
    edit(window, "42");
    action(window, "actionSave").trigger();
    EXPECT_FALSE(window.isWindowModified()) << "the other one is gone";
}

TEST_F(DocumentFilesTest, RevertAsksAndReadsTheFileAgain) {
    DocumentWindow& window = open("crop-single.orrery");
    const std::string saved(window.document().theDictionary().textOrEmpty(setup_key::runLength));
    edit(window, "42");
    action(window, "actionRevert").trigger();
    answer(window, "revert", "Cancel");
    EXPECT_EQ(window.document().theDictionary().textOrEmpty(setup_key::runLength), "42");
    action(window, "actionRevert").trigger();
    answer(window, "revert", "Revert");
    EXPECT_EQ(window.document().theDictionary().textOrEmpty(setup_key::runLength), saved);
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_EQ(coreText(window.windowTitle()), "crop-single.orrery[*]");
    edit(window, "43");
    action(window, "actionSave").trigger();
    EXPECT_NE(readWholeFile(files.path() + "crop-single.orrery").find("<RunLength>43<"), std::string::npos);
    files.write("crop-single.orrery", "just text");
    action(window, "actionRevert").trigger();
    answer(window, "“crop-single.orrery” is not a setup file.", "OK");
}

TEST_F(DocumentFilesTest, TheQuestionOfAClosingWindowDoesAsAnswered) {
    struct Case {
        const char* button;
        bool saveFails;
        bool closes;
        bool saves;
    };
    for (const Case& row : {Case{"Save", true, false, false}, Case{"Cancel", false, false, false},
                            Case{"Don't Save", false, true, false}, Case{"Save", false, true, true}}) {
        SCOPED_TRACE(row.button);
        QPointer<DocumentWindow> window = &open("crop-single.orrery");
        const std::string path = *window->document().file().path();
        const std::string before = readWholeFile(path);
        edit(*window, row.saveFails ? "42\u4e2d" : "42"); // a character that the file's encoding lacks
        window->close();
        answer(*window, "Do you want to save the changes made to “crop-single.orrery”?", row.button);
        if (row.saveFails) answer(*window, "could not be saved", "OK");
        EXPECT_EQ(waitFor([&] { return window == nullptr; }, row.closes ? 20'000 : 0), row.closes);
        const std::string after = readWholeFile(path);
        EXPECT_EQ(after == before, !row.saves);
        EXPECT_EQ(after.find("<RunLength>42<") != std::string::npos, row.saves);
        if (window != nullptr) window->document().updateChangeCount(ChangeKind::Cleared);
        if (window != nullptr) window->close();
    }
}

TEST_F(DocumentFilesTest, ClosingDuringARunAsksAndEndsTheEngine) {
    QPointer<DocumentWindow> window = &open(slowSetup());
    window->document().runSimulation();
    ASSERT_EQ(window->document().runControl().state(), RunControl::State::Running);
    window->close();
    answer(*window, "is running", "Cancel");
    EXPECT_EQ(window->document().runControl().state(), RunControl::State::Running);
    window->close();
    answer(*window, "is running", "Abort and Close");
    ASSERT_TRUE(waitFor([&] { return window == nullptr; }));
    EXPECT_TRUE(waitFor([&] { // what is left of the run keeps the lock
        return std::holds_alternative<RunLock>(RunLock::tryAcquire(files.path() + "tmp/", "test"));
    }));
}

TEST_F(DocumentFilesTest, AFileOpensOnceUnderAllItsNamesAndEqualNamesAreToldApartByTheirFolders) {
    DocumentWindow& window = open("crop-single.orrery");
    std::filesystem::create_symlink(files.path() + "crop-single.orrery", files.path() + "link.orrery");
    auto& documents = controller->documentController();
    EXPECT_EQ(documents.openDocument(files.path() + "link.orrery"), &window);
    EXPECT_EQ(documents.openDocument(files.path() + "./x/../crop-single.orrery"), &window);
    EXPECT_EQ(windows().size(), 1U);
    std::filesystem::create_directories(files.path() + "other");
    std::filesystem::copy(files.path() + "crop-single.orrery", files.path() + "other");
    DocumentWindow& other = open(files.path() + "other/crop-single.orrery");
    EXPECT_TRUE(other.windowTitle().contains(qtPath(files.path() + "other")));
    EXPECT_TRUE(window.windowTitle().contains(" — "));
    other.close();
    EXPECT_EQ(coreText(window.windowTitle()), "crop-single.orrery[*]");
}

TEST_F(DocumentFilesTest, WhatIsNoSetupIsToldAndItsFileKeptWhenSaving) {
    DocumentWindow& window = open(files.write("notes.orrery", "just text"));
    answer(window, "is not a setup file", "OK");
    action(window, "actionSave").trigger();
    EXPECT_EQ(readWholeFile(files.path() + "notes.orrery~"), "just text");
    EXPECT_EQ(controller->documentController().openDocument(files.path() + "missing.orrery"), nullptr);
    answer(window, "“missing.orrery” could not be opened.", "OK");
}

TEST_F(DocumentFilesTest, ManyFilesOpenTwentyWindowsAndOneMessage) {
    std::vector<std::string> paths;
    for (int number = 0; number < 30; ++number) {
        const std::string name = files.path() + "many" + std::to_string(number) + ".orrery";
        std::filesystem::copy(sampleCopy("crop-single.orrery"), name);
        paths.push_back(files.path() + "missing" + std::to_string(number) + ".orrery");
        paths.push_back(name);
    }
    controller->reopen(paths);
    EXPECT_EQ(windows().size(), 20U);
    const QWidgetList alerts = windowsCalled("alert");
    ASSERT_EQ(alerts.size(), 1);
    const auto& alert = static_cast<const QMessageBox&>(*alerts.front());
    const QString text = alert.text() + alert.informativeText();
    for (const char* part :
         {"20 files could not be opened.", "missing0.orrery", "And 12 more.", "20 files were left out"})
        EXPECT_TRUE(text.contains(part)) << part << " in " << coreText(text);
    answer(*windows().back(), "could not be opened", "OK");
}

TEST_F(DocumentFilesTest, ABrokenModelHasOneSheetHoweverOftenTheWindowComesToTheFront) {
    DocumentWindow& window = open("crop-single.orrery");
    const std::string model = window.document().file().modelPath();
    for (int time = 0; time < 5; ++time) {
        replaceFile(model, "<database>" + std::string(static_cast<std::size_t>(time), ' '));
        controller->applicationDidBecomeActive();
        EXPECT_EQ(window.findChildren<QMessageBox*>("alert").size(), 1);
    }
    answer(window, "The model", "OK");
    EXPECT_EQ(alertOf(window), nullptr);
}

TEST_F(DocumentFilesTest, RecentSetupsComeMostRecentFirstWithoutMissingOnesAndAreCleared) {
    for (int number = 0; number < 12; ++number) {
        const std::string path = files.write("setup " + std::to_string(number) + "\xff.orrery", "");
        controller->documentController().recentDocuments().note(path); // a name that is no UTF-8
    }
    std::filesystem::remove(files.path() + "setup 11\xff.orrery");
    const auto paths = controller->documentController().recentDocuments().paths();
    ASSERT_EQ(paths.size(), 9U);
    EXPECT_EQ(paths.front(), files.path() + "setup 10\xff.orrery");
    DocumentWindow& window = openNew();
    auto& menu = find<QMenu>(window, "menuOpenRecent");
    EXPECT_EQ(menu.actions().size(), 11); // a separator and Clear Menu
    action(window, "actionClearRecent").trigger();
    EXPECT_TRUE(controller->documentController().recentDocuments().paths().empty());
}

} // namespace

std::string ShellTest::slowSetup() {
    sampleCopy("predator-prey.xml");
    return files.write(
        "slow.orrery",
        "<Simulation><ModelPath>predator-prey.xml</ModelPath><StepsPerDay>1000</StepsPerDay><RunLength>"
        "1000000</RunLength><ReportStep>1000000</ReportStep><Dimensions>{ 1, 1 }</Dimensions></Simulation>");
}

} // namespace orrery::test
