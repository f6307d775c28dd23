#pragma once

#include "platform/Files.h"
#include "platform/Outlets.h"
#include "platform/RunLoop.h"
#include "platform/values/OrreryError.h"
#include "run/RunOutcome.h"
#include "run/RunResults.h"
#include "run/TaskWrapper.h"
#include "run/lock/RunLock.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orrery {

/// The user cancelled the building of results; nothing is left of them.
class ResultsCancelled : public OrreryError {
public:
    ResultsCancelled() : OrreryError("The reading of the results was cancelled.", {}, "") {}
};

/// What run control needs of the document whose setup is run.
class RunHost {
public:
    virtual ~RunHost() = default;
    [[nodiscard]] virtual bool hasUnsavedChanges() const = 0;
    /// Saves the document; `didSave` comes once, with whether it succeeded, maybe before this returns.
    virtual void saveDocument(std::function<void(bool)> didSave) = 0;
    [[nodiscard]] virtual std::optional<std::string> filePath() const = 0; // none: never saved
    /// A copy that was never saved, and so has no file for the engine.
    [[nodiscard]] virtual bool isUnsavedCopy() const = 0;
    /// Whether the document's file may be run as it is now; says or asks why not.
    virtual bool mayRun() = 0;
    /// The engine is about to be started with the document's file as that is now.
    virtual void keepStartedSetup() = 0;
    /// Clears the sweep variables and marks the plot view for redisplay.
    virtual void clearSweepForRun() = 0;
    virtual void engineWrote(std::string_view /*text*/) {}
    /// Builds sweep variables, response variables and simulation data, in that order. What it throws ends the building.
    virtual const RunResults& buildResults() = 0;
    virtual void runStateChanged() = 0; // a run was started, waits for its turn or has ended
};

/// The window's parts that show a run. Without alerts its messages go to the services.
struct RunOutlets {
    StatusView* statusView = &silentOutlet();
    ProgressWheel* progressWheel = &silentOutlet();
    TwoStateButton* startStopButton = &silentOutlet();
    Alerts* alerts = nullptr;
};

/// What a run needs of the platform; nothing is owned.
struct RunServices {
    ChildProcessLauncher* launcher = nullptr;
    RunLoop* runLoop = nullptr;
    std::function<std::optional<std::string>()> enginePath; // absolute path of the executable "Zephyr"
    std::string temporaryDirectory;                         // ends in "/"; empty: there is none to use
    std::string temporaryDirectoryFault;                    // then: why, and what to do
    /// Takes the messages of a document without a window, one line each.
    std::function<void(const std::string&)> message;
};

/// The document's side of a run: has it saved first if need be, finds and starts the engine, shows its text, lets the
/// user abort, and has the results built when the engine's output ends.
///
/// One run at a time uses a temporary directory: where another one runs, a sheet says which and offers to wait.
/// Owned by its document; main thread.
class RunControl : public TaskWrapperController {
public:
    enum class State {
        Idle,
        Waiting, // for another run in the same temporary directory
        Ending,  // for what is left of this document's earlier run; ours starts then
        Running
    };

    RunControl(RunHost& host, RunServices services);
    RunControl(const RunControl&) = delete;
    RunControl& operator=(const RunControl&) = delete;
    ~RunControl() override; // ends a running engine and reports nothing

    void setOutlets(const RunOutlets& outlets) { m_outlets = outlets; }
    /// Without a window: wait for the turn instead of giving up when another run holds the temporary directory.
    void setWaitsForTurn(bool waits) { m_waitsForTurn = waits; }

    void runSimulation();
    void simulationStartOrAbort(); // by the button's new state
    void abortSimulation();
    void documentDidSave(bool saved);
    void checkForDirtyModelDocument();
    void doRun();
    /// Has the results of the last run built anew from its table, for a host that now builds them otherwise. Returns
    /// false, having said why, when the table is no longer the one that was read, or a run is under way.
    bool rebuildResults();

    void requireIdle() const; // @throws OrreryError while a run is under way
    /// The host's results are those of a run that was kept, at that time. @throws as requireIdle
    void showKept(const RunResults& results, std::string ranAt);

    /// Why there can be neither a run nor results; empty: there can.
    [[nodiscard]] const std::string& fault() const { return m_services.temporaryDirectoryFault; }
    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] bool isAborted() const { return m_isAborted; }
    /// How the last run ended. An abort while waiting for a turn changes nothing of it.
    [[nodiscard]] const RunOutcome& outcome() const { return m_outcome; }

    void appendOutput(std::string_view text) override;
    void processStarted() override;
    void engineEnded(const ProcessEnd& end) override { m_outcome.end = end; }
    void processFinished() override;

private:
    void saveCopyAndRun();
    void startWhenFree(const std::string& enginePath);
    void askWhetherToWait(const RunLock::Holder& holder, const std::string& enginePath);
    void waitForTurn(const std::string& enginePath, State state);
    void lookForTurn(const std::string& enginePath);
    void endWait();
    [[nodiscard]] std::optional<std::variant<RunLock, RunLock::Holder>> tryTurn();
    [[nodiscard]] State waitFor(const RunLock::Holder& holder) const;
    [[nodiscard]] bool isWaiting() const { return m_state == State::Waiting || m_state == State::Ending; }
    void startEngine(const std::string& enginePath, RunLock lock);
    void makeTask(const std::string& enginePath);
    void requireOwnTable();
    void askWhetherToAbortRunning();
    void takeEnd();
    void finishResults();
    void buildResults();
    void takeResults(const RunResults& built);
    void failResults(const std::string& reason);
    [[nodiscard]] std::optional<FileIdentity> tableNow() const;
    void appendStatus(std::string_view text);
    void showSheet(const AlertText& text, std::function<void(std::size_t)> answered);
    void setButton(ButtonState state);
    void setState(State state);

    RunHost& m_host;
    RunServices m_services;
    RunOutlets m_outlets;
    std::unique_ptr<TaskWrapper> m_searchTask; // of the current or last run
    RunLock::Holder m_lastRun;                 // as the lock's holder
    std::optional<RunLock> m_lock;             // held from the engine's start until the table is read
    std::unique_ptr<RunLoop::Source> m_turn;   // looks now and then whether it is our turn
    std::optional<FileIdentity> m_tableBefore; // of the table that an earlier run left
    std::optional<FileIdentity> m_tableRead;   // of the one that the results are from
    std::chrono::steady_clock::time_point m_started;
    RunOutcome m_outcome;
    State m_state = State::Idle;
    bool m_isAborted = false;
    bool m_waitsForTurn = false;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0); // expires with this object: sheets are answered later
};

} // namespace orrery
