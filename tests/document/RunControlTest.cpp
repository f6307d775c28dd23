#include "document/DocumentFixture.h"
#include "document/setup/SetupWriter.h"
#include "platform/Calendar.h"
#include "platform/Files.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace orrery::test {
namespace {

constexpr const char* sixRows = "row\train\tday\tbiomass\tyield\n"
                                "0 0 1\t1\t10\n1 0 2\t2\t20\n2 0 3\t3\t30\n"
                                "3 1 1\t4\t40\n4 1 2\t5\t50\n5 1 3\t6\t60\n";

class RunControlTest : public CropTest {
protected:
    void writeTable() { temporary.write("Zephyr.txt", sixRows); }
    void run() {
        document.runSimulation();
        writeTable();
        launcher.last().end();
    }
};

TEST_F(RunControlTest, ARunGoesFromTheSavedFileToTheResults) {
    document.runSimulation();
    ASSERT_EQ(launcher.children.size(), 1U);
    EXPECT_EQ(launcher.last().command, (std::vector<std::string>{*enginePath, files.path() + "crop.orrery"}));
    EXPECT_EQ(window.button, ButtonState::On);
    EXPECT_TRUE(window.wheelTurns);
    EXPECT_EQ(log.back(), "Starting task.");

    launcher.last().write("day 1\n");
    writeTable();
    launcher.last().end();

    EXPECT_EQ(window.status, "day 1\nProcessing output\u2026");
    EXPECT_EQ(window.button, ButtonState::Off);
    EXPECT_FALSE(window.wheelTurns);
    EXPECT_EQ(window.attention, 1U);
    EXPECT_TRUE(launcher.last().terminated);
    EXPECT_EQ(document.nRowsOfData(), 6U);
    EXPECT_EQ(document.responseVariableLabels(), (std::vector<std::string>{"biomass", "yield"}));
    EXPECT_THAT(document.simulationData(), testing::ElementsAre(1, 10, 2, 20, 3, 30, 4, 40, 5, 50, 6, 60));
    EXPECT_EQ(document.yMax(), (std::vector<float>{6, 60}));
    EXPECT_TRUE(document.runControl().outcome().isWhole());
}

TEST_F(RunControlTest, UnsavedChangesAreAskedAbout) {
    struct Case {
        const char* name;
        std::size_t answer;
        std::size_t starts;
        bool editedAfterwards;
    };
    for (const Case& row : {Case{"Save", 0, 1, false}, Case{"Cancel", 1, 0, true}, Case{"Don't Save", 2, 1, true}}) {
        SCOPED_TRACE(row.name);
        launcher.children.clear();
        document.theDictionary().setText(setup_key::runLength, "3");
        document.updateChangeCount(ChangeKind::Done);
        window.modalAnswer = row.answer;
        document.runSimulation();
        EXPECT_EQ(window.alerts.back().buttons.at(row.answer), row.name);
        EXPECT_EQ(launcher.children.size(), row.starts);
        EXPECT_EQ(document.setup().isEdited(), row.editedAfterwards);
        document.abortSimulation();
        document.updateChangeCount(ChangeKind::Cleared);
    }
}

TEST_F(RunControlTest, AFailedSaveStillStartsTheEngine) {
    document.setSaveHandler([](const std::function<void(bool)>& didSave) { didSave(false); });
    document.updateChangeCount(ChangeKind::Done);
    document.runSimulation();
    EXPECT_EQ(launcher.children.size(), 1U);
}

TEST_F(RunControlTest, AMissingEngineChangesNothing) {
    enginePath.reset();
    document.runSimulation();
    EXPECT_TRUE(launcher.children.empty());
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_EQ(window.sheets[0].message, "Error");
    EXPECT_EQ(window.sheets[0].informative, "Couldn't find Zephyr.");
    EXPECT_EQ(log.back(), "Couldn't find Zephyr");
    EXPECT_EQ(window.button, ButtonState::Off);
}

TEST_F(RunControlTest, AnAbortedRunLeavesNothingToPlot) {
    document.runSimulation();
    writeTable();
    launcher.last().pending = "last words ";
    window.button = ButtonState::Off; // the click
    document.simulationStartOrAbort();
    EXPECT_EQ(window.status, "last words Aborted");
    EXPECT_TRUE(launcher.last().terminated);
    EXPECT_TRUE(document.independentVariables().empty());
    EXPECT_TRUE(document.simulationData().empty());
    EXPECT_FALSE(window.wheelTurns);
    EXPECT_EQ(document.runControl().outcome().kind, RunOutcome::Kind::Aborted);

    window.button = ButtonState::On;
    document.simulationStartOrAbort();
    EXPECT_EQ(launcher.children.size(), 2U);
    EXPECT_EQ(window.status, ""); // the first run reports nothing again
}

TEST_F(RunControlTest, AStartDuringARunAsksAndNeverReadsTheInterruptedTable) {
    document.runSimulation();
    writeTable();
    document.runSimulation();
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_EQ(launcher.children.size(), 1U);
    window.sheetAnswer(1); // Cancel
    EXPECT_TRUE(launcher.last().listening);

    document.runSimulation();
    window.sheetAnswer(0); // Abort and Run
    ASSERT_EQ(launcher.children.size(), 2U);
    EXPECT_TRUE(launcher.children[0]->terminated);
    EXPECT_TRUE(document.independentVariables().empty());
    EXPECT_EQ(window.button, ButtonState::On);
    EXPECT_FALSE(document.runControl().isAborted());
}

TEST_F(RunControlTest, TextAndStateTellHowARunEnded) {
    struct EndedRun {
        const char* name;
        bool earlierTable;
        const char* table; // that the engine writes; nullptr: none
        ProcessEnd end;
        const char* told; // at the end of the status text or in it
        const char* state;
    };
    using Kind = ProcessEnd::Kind;
    const ProcessEnd well{Kind::Exited, 0};
    const char* const oneRow = "a\tb\tc\tbiomass\tyield\n0 0 1\t1\t10\n";
    const char* const oneLabel = "a\tb\tc\tbiomass\n";
    const EndedRun cases[] = {
        {"exitCode", true, sixRows, {Kind::Exited, 3}, "\nThe engine ended with exit code 3.", "; the engine"},
        {"tooFewRows", true, oneRow, {}, "1 of 6 rows", "Incomplete: 1 of 6 rows, 2 responses, "},
        {"tooFewLabels", true, oneLabel, {}, "label", "Failed: the results could not be read"},
        {"old", true, nullptr, well, "was not written by this run",
         "Results of an earlier run (less than a second old)"},
        {"none", false, nullptr, well, "was not found", "Failed: the engine left no result table"},
        {"crash", false, nullptr, {Kind::Signalled, 11}, "signal 11", "Failed: the engine was"},
        {"notStarted",
         false,
         nullptr,
         {Kind::NotStarted, 0},
         "could not be started",
         "Failed: the engine could not be started"},
        {"whole", false, sixRows, well, "output\u2026", "Done: 6 rows, 2 responses, less"},
    };
    for (const EndedRun& row : cases) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(temporary.path() + "Zephyr.txt");
        if (row.earlierTable) writeTable();
        document.runSimulation();
        EXPECT_EQ(outcomeText(document.runControl().outcome(), currentDate()), "");
        if (row.table != nullptr) temporary.write("Zephyr.txt", row.table);
        launcher.last().end(row.end);
        EXPECT_THAT(window.status, testing::HasSubstr(row.told));
        EXPECT_THAT(outcomeText(document.runControl().outcome(), currentDate()), testing::HasSubstr(row.state));
        const bool failed = std::string_view(row.state).starts_with("Failed");
        EXPECT_EQ(document.simulationData().empty(), failed);
        EXPECT_EQ(document.dependentVariables().empty(), failed);
        EXPECT_EQ(window.button, ButtonState::Off);
        EXPECT_FALSE(window.wheelTurns);
        EXPECT_EQ(std::exchange(window.attention, 0), 1U);
    }
    ASSERT_EQ(window.alerts.size(), 3U) << "tables that are missing";
    EXPECT_EQ(window.alerts[0].message, "File Not Found");
    EXPECT_EQ(window.alerts[0].informative, "The data file, " + temporary.path() + "Zephyr.txt, was not found.");
    ASSERT_EQ(window.sheets.size(), 1U);
    EXPECT_EQ(window.sheets[0].message, "The results could not be read.");
}

TEST_F(RunControlTest, WhatRanIsToldFromTheDocumentsSetupAndCanReadTheTable) {
    document.setup().editEntry(PortList::Steppers, 0, "stop", "2"); // 3 × 3 rows now
    EXPECT_FALSE(document.setup().isEdited());
    window.modalAnswer = 2; // Don't Save: the engine reads 2 × 3
    run();
    EXPECT_EQ(window.alerts.size(), 1U) << "asked to save although no change is counted";
    const std::string difference = "2 × 3 = 6 rows, not 3 × 3 = 9 rows";
    EXPECT_EQ(document.reading().gridChoice().difference, difference);
    EXPECT_THAT(window.status, testing::HasSubstr(difference));
    EXPECT_EQ(document.nRowsOfData(), 9U);
    EXPECT_TRUE(document.runControl().outcome().isPartial());

    document.readByOtherGrid();
    EXPECT_EQ(document.nRowsOfData(), 6U);
    EXPECT_TRUE(document.runControl().outcome().isWhole());
    EXPECT_THAT(document.reading().gridChoice().text(), testing::HasSubstr("by the grid of the setup that ran"));
    document.readByOtherGrid();
    EXPECT_EQ(document.nRowsOfData(), 9U);

    temporary.write("Zephyr.txt", "another run's");
    document.readByOtherGrid();
    EXPECT_EQ(window.sheets.back().message, "The results cannot be read again.");
    EXPECT_EQ(document.nRowsOfData(), 9U) << "nothing is lost";

    document.runSimulation();
    document.readByOtherGrid(); // there is nothing to read while another run goes on
    EXPECT_TRUE(document.independentVariables().empty());
    EXPECT_TRUE(document.reading().gridChoice().difference.empty());
}

TEST_F(RunControlTest, AnEditDuringTheRunThatLeavesTheGridIsTold) {
    document.runSimulation();
    document.setup().addPort(PortList::Initializations, "/Field/Crop/rain");
    writeTable();
    launcher.last().end();
    EXPECT_THAT(window.status, testing::HasSubstr("The document's setup is not the one that ran"));
    EXPECT_TRUE(document.reading().gridChoice().difference.empty());
}

/// A setup in a folder of its own, which writes its result file beside that.
class ForeignSetup : public RunControlTest {
protected:
    void open(const std::string& output) {
        std::filesystem::create_directory(files.path() + "stranger");
        SetupDictionary setup = defaultSetup();
        setup.setText(setup_key::modelPath, "../crop.xml");
        setup.setText(setup_key::dimensions, "{ 2, 1 }");
        setup.mutableList(setup_key::outputs) = {Entry{{"portPath", "/Field/Crop/yield"}, {"outputPath", output}}};
        foreign.readFromFile(files.write("stranger/s.orrery", setupFileBytes(setup, "s")));
        show(foreign);
    }
    /// Whether a run starts. It is aborted.
    bool runs() {
        const std::size_t before = launcher.children.size();
        foreign.runSimulation();
        foreign.abortSimulation();
        return launcher.children.size() > before;
    }
    MyDocument foreign{services()};
};

TEST_F(ForeignSetup, AsksOnceBeforeItWritesOverFilesOutsideItsFolder) {
    const std::string precious = files.write("precious.txt", "mine");
    open("../precious.txt");
    window.modalAnswer = 1; // Cancel
    EXPECT_FALSE(runs());
    ASSERT_EQ(window.alerts.size(), 1U);
    EXPECT_THAT(window.alerts[0].informative, testing::HasSubstr("precious.txt"));
    foreign.setup().editText(setup_key::runLength, "5");
    foreign.saveToFile(*foreign.file().path()); // which makes it no more trustworthy
    EXPECT_FALSE(runs());
    window.modalAnswer = 0;
    EXPECT_TRUE(runs());
    EXPECT_TRUE(runs());
    foreign.setup().editText(setup_key::runLength, "6");
    foreign.saveToFile(*foreign.file().path());
    MyDocument again(services());
    again.readFromFile(*foreign.file().path());
    again.runSimulation();
    again.abortSimulation();
    EXPECT_EQ(window.alerts.size(), 3U) << "asked again of what the user has allowed";
}

TEST_F(ForeignSetup, RunsUnaskedWhereItReplacesNothingOutside) {
    files.write("stranger.txt", "");
    std::filesystem::create_directory(files.path() + "stranger");
    for (const std::string& output :
         {files.path() + "stranger/in.txt", std::string("in.txt"), files.path() + "new.txt"}) {
        files.write("stranger/in.txt", "");
        open(output);
        EXPECT_TRUE(runs()) << output;
    }
    EXPECT_TRUE(window.alerts.empty());
}

TEST_F(RunControlTest, ACancelledReadingLeavesNoResults) {
    CancellablePanel panel;
    panel.cancels = true;
    show(document, &panel);
    run();
    EXPECT_EQ(window.status, "Processing output\u2026\nAborted");
    EXPECT_TRUE(document.runControl().isAborted());
    EXPECT_TRUE(document.independentVariables().empty());
    EXPECT_TRUE(document.dependentVariables().empty());
    EXPECT_EQ(panel.open, 0);
    EXPECT_TRUE(window.sheets.empty());
}

TEST_F(RunControlTest, ARunOfTheSameVariablesKeepsWhatWasChosenToBeSeenAndAnAbortEmptiesThePlot) {
    run();
    document.independentVariables().back().setFunction(PlotRole::Axis1);
    document.dependentVariables().front().setValue("includep", true);
    document.setupPlotView();
    const std::vector<VertexRange> shown = plot.ranges();
    ASSERT_FALSE(shown.empty());
    run();
    EXPECT_EQ(document.independentVariables().back().function(), PlotRole::Axis1);
    EXPECT_TRUE(document.dependentVariables().front().includep());
    EXPECT_TRUE(document.plot().isOutdated());
    document.runSimulation();
    EXPECT_EQ(plot.ranges(), shown) << "drawn when the user next changes the plot";
    document.abortSimulation();
    EXPECT_TRUE(plot.ranges().empty());
    EXPECT_EQ(outcomeText(document.runControl().outcome(), currentDate()), "Aborted");
}

/// An untitled document beside the one that runs, with a window of its own.
struct SecondDocument {
    explicit SecondDocument(DocumentServices services) : document(std::move(services)) {
        document.setTheDictionary(defaultSetup());
        DocumentOutlets outlets;
        outlets.alerts = &window;
        outlets.startStopButton = &window;
        document.setOutlets(outlets);
    }
    RecordingWindow window;
    MyDocument document;
};

TEST_F(RunControlTest, OneRunAtATimeUsesTheTemporaryDirectory) {
    document.runSimulation();
    SecondDocument other(services());
    MyDocument& second = other.document;
    RecordingWindow& otherWindow = other.window;
    otherWindow.button = ButtonState::On;
    second.simulationStartOrAbort();
    ASSERT_EQ(otherWindow.sheets.size(), 1U);
    EXPECT_NE(otherWindow.sheets[0].informative.find("crop.orrery"), std::string::npos);
    otherWindow.sheetAnswer(1); // Cancel
    EXPECT_EQ(otherWindow.button, ButtonState::Off);

    second.runSimulation();
    otherWindow.sheetAnswer(0); // Wait
    loop.tick();
    EXPECT_EQ(second.runControl().state(), RunControl::State::Waiting);
    EXPECT_EQ(launcher.children.size(), 1U);

    writeTable();
    launcher.last().end();
    loop.tick();
    EXPECT_EQ(second.runControl().state(), RunControl::State::Running);
    EXPECT_EQ(launcher.last().command.size(), 1U); // an untitled setup has no file to name
}

/// Run again while waiting, then an answer to the second sheet: button and state agree, and a wait that was cancelled
/// starts nothing later.
TEST_F(RunControlTest, EveryAnswerWhileWaitingLeavesButtonAndStateInAgreement) {
    struct Case {
        const char* name;
        const char* doing; // a: abort; f: the other run ends; t: time passes; 0, 1: the second sheet's answer
        RunControl::State state;
    };
    using State = RunControl::State;
    for (const Case& row :
         {Case{"abort", "aft", State::Idle}, Case{"cancel", "1ft", State::Idle},
          Case{"waitTwice", "0ft", State::Running}, Case{"cancelAfterTheTurnCame", "ft1", State::Running},
          Case{"waitAfterTheTurnCame", "ft0t", State::Running}, Case{"abortThenCancel", "a1ft", State::Idle},
          Case{"abortThenWait", "a0ft", State::Running}}) {
        SCOPED_TRACE(row.name);
        document.runSimulation();
        SecondDocument other(services());
        MyDocument& second = other.document;
        second.runSimulation();
        other.window.sheetAnswer(0); // Wait
        second.runSimulation();
        for (const char step : std::string_view(row.doing)) {
            if (step == 'a') second.abortSimulation();
            if (step == 'f') document.abortSimulation();
            if (step == 't') loop.tick();
            if (step == '0' || step == '1') other.window.sheetAnswer(step == '0' ? 0 : 1);
        }
        EXPECT_EQ(second.runControl().state(), row.state);
        EXPECT_EQ(other.window.button, row.state == State::Idle ? ButtonState::Off : ButtonState::On);
        second.abortSimulation();
    }
}

TEST_F(RunControlTest, ALockThatCannotBeTakenIsToldAndNothingElseChanges) {
    const std::string lock = temporary.path() + "orrery-run.lock";
    window.button = ButtonState::On; // the click
    std::filesystem::create_symlink("elsewhere", lock);
    document.simulationStartOrAbort();
    EXPECT_NE(window.sheets.back().informative.find("symbolic link"), std::string::npos);
    EXPECT_EQ(window.button, ButtonState::Off);
    std::filesystem::remove(lock);
    document.runSimulation();
    ASSERT_EQ(launcher.children.size(), 1U);

    MyDocument second(services()); // the same while waiting
    second.setTheDictionary(defaultSetup());
    second.runControl().setWaitsForTurn(true);
    second.runSimulation();
    EXPECT_EQ(second.runControl().state(), RunControl::State::Waiting);
    std::filesystem::remove_all(temporary.path());
    loop.tick();
    EXPECT_EQ(second.runControl().state(), RunControl::State::Idle);
    EXPECT_EQ(document.runControl().state(), RunControl::State::Running);
}

TEST_F(RunControlTest, ADocumentThatGoesEndsItsEngineSilently) {
    {
        MyDocument passing(services());
        passing.setTheDictionary(defaultSetup());
        show(passing);
        passing.runSimulation();
        writeTable();
        passing.close();
    }
    EXPECT_TRUE(launcher.last().terminated);
    EXPECT_EQ(window.status, "");
}

} // namespace
} // namespace orrery::test
