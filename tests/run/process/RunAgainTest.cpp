// Run control with real engines: a run that is asked for while an earlier one of the document still lives.
#include "platform/Files.h"
#include "run/RunControl.h"
#include "run/process/ProcessTest.h"
#include "run/table/ResultTable.h"
#include "support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>

namespace orrery {
namespace {

/// Stands in for the document: its result is the table's text.
struct Host : RunHost {
    [[nodiscard]] bool hasUnsavedChanges() const override { return false; }
    void saveDocument(std::function<void(bool)> didSave) override { didSave(true); }
    [[nodiscard]] std::optional<std::string> filePath() const override { return std::nullopt; }
    void clearSweepForRun() override { result.clear(); }
    bool mayRun() override { return true; }
    void keepStartedSetup() override {}
    const RunResults& buildResults() override {
        result = readWholeFile(table);
        return results;
    }
    [[nodiscard]] bool isUnsavedCopy() const override { return false; }
    void runStateChanged() override {}

    std::string table;
    std::string result;
    RunResults results;
};

/// Shows the log and a button; answers nothing by itself.
struct Window : StatusView, TwoStateButton, Alerts {
    void setString(std::string_view text) override { log = text; }
    void appendString(std::string_view text) override { log += text; }
    void setNeedsDisplay() override {}
    [[nodiscard]] ButtonState state() const override { return button; }
    void setState(ButtonState state) override { button = state; }
    void setEnabled(bool) override {}
    [[nodiscard]] std::size_t runModal(const AlertText&) override { return 0; }
    void beginSheet(const AlertText& text, std::function<void(std::size_t)> answered) override {
        sheet = text.message;
        answer = std::move(answered);
    }
    void requestUserAttention() override {}

    std::string log;
    ButtonState button = ButtonState::Off;
    std::string sheet;
    std::function<void(std::size_t)> answer;
};

class RunAgain : public ProcessTest {
protected:
    RunAgain() {
        m_host.table = resultTablePath(m_folder.path());
        RunOutlets outlets;
        outlets.statusView = &m_window;
        outlets.startStopButton = &m_window;
        outlets.alerts = &m_window;
        m_run.setOutlets(outlets);
    }
    RunServices services() {
        RunServices services;
        services.launcher = m_launcher.get();
        services.runLoop = &m_application.runLoop();
        services.enginePath = [this] { return m_engine; };
        services.temporaryDirectory = m_folder.path();
        return services;
    }
    void useEngine(const std::string& script) {
        m_engine = m_folder.write("engine", "#!/bin/sh\ncd \"$(dirname \"$0\")\"\n" + script + "\n");
        std::filesystem::permissions(m_engine, std::filesystem::perms::owner_all);
    }
    void startDeafEngine() {
        useEngine("trap '' TERM; echo running; while :; do echo late >late; mv late Zephyr.txt; sleep 0.01; done");
        m_run.runSimulation();
        ASSERT_TRUE(waitFor([&] { return m_window.log == "running\n"; }));
        useEngine("echo own >Zephyr.txt; sleep 0.1");
    }
    [[nodiscard]] bool agree() const {
        return (m_window.button == ButtonState::On) == (m_run.state() != RunControl::State::Idle);
    }

    test::TemporaryFolder m_folder;
    std::string m_engine;
    Host m_host;
    Window m_window;
    RunControl m_run{m_host, services()};
};

TEST_F(RunAgain, StartsWhenTheAbortedRunIsReallyOver) {
    const char* const rounds = std::getenv("ORRERY_ROUNDS");
    for (int left = rounds == nullptr ? 1 : std::atoi(rounds); left > 0; --left) {
        startDeafEngine();
        m_run.runSimulation();
        m_window.answer(0); // Abort and Run
        EXPECT_EQ(m_run.state(), RunControl::State::Ending);
        m_window.sheet.clear();
        m_run.runSimulation(); // once more: it comes anyway, and is not asked about
        EXPECT_EQ(m_window.sheet + std::to_string(static_cast<int>(agree())), "1");
        ASSERT_TRUE(waitFor([&] { return m_run.outcome().isWhole(); }));
        ASSERT_EQ(m_host.result, "own\n");
        EXPECT_TRUE(agree());
    }
}

TEST_F(RunAgain, IsCancelledWhileTheAbortedRunEnds) {
    startDeafEngine();
    m_run.abortSimulation();
    m_run.runSimulation();
    ASSERT_EQ(m_run.state(), RunControl::State::Ending);
    m_window.button = ButtonState::Off; // the click
    m_run.simulationStartOrAbort();
    EXPECT_EQ(m_run.state(), RunControl::State::Idle);
    EXPECT_TRUE(waitFor([&] { // the lock is free, and nobody has taken it
        return std::holds_alternative<RunLock>(RunLock::tryAcquire(m_folder.path(), "test"));
    }));
    EXPECT_EQ(m_run.state(), RunControl::State::Idle);
    EXPECT_TRUE(agree());
}

TEST_F(RunAgain, ReadsNoTableWhereItsLockWasLost) {
    useEngine("echo own >Zephyr.txt; rm orrery-run.lock; cd ..; mv \"$OLDPWD\" \"$OLDPWD-moved\"; mkdir \"$OLDPWD\"");
    m_run.runSimulation();
    ASSERT_TRUE(waitFor([&] { return m_run.state() == RunControl::State::Idle; }));
    EXPECT_FALSE(m_run.outcome().isWhole());
    EXPECT_NE(m_window.log.find("removed or replaced"), std::string::npos) << m_window.log;
    std::string moved = m_folder.path();
    moved.pop_back();
    std::filesystem::remove_all(moved + "-moved");
}

} // namespace
} // namespace orrery
