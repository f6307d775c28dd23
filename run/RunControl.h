#pragma once

#include "platform/Date.h"
#include "platform/Outlets.h"
#include "platform/RunLoop.h"
#include "platform/TemporaryDirectory.h"
#include "run/TaskWrapper.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orrery {

/// What run control needs of the document whose setup is run.
class RunHost {
public:
    virtual ~RunHost() = default;
    [[nodiscard]] virtual bool isDocumentEdited() const = 0;
    /// Saves the document; `didSave` comes once, with whether it succeeded, maybe before this returns.
    virtual void saveDocument(std::function<void(bool)> didSave) = 0;
    [[nodiscard]] virtual std::optional<std::string> filePath() const = 0; // none: never saved
    virtual void clearResultsForRun() = 0;                                 // and redraw the plot view
    /// Builds sweep variables, response variables and simulation data, in that order; returns what the user should
    /// know of them, one line each. What it throws ends the building.
    [[nodiscard]] virtual std::vector<std::string> buildResults() = 0;
    virtual void runStateChanged() = 0; // a run was started or has ended
};

/// The window's parts that show a run; each may be absent.
struct RunOutlets {
    StatusView* statusView = nullptr;
    ProgressWheel* progressWheel = nullptr;
    TwoStateButton* startStopButton = nullptr;
    Alerts* alerts = nullptr;
};

/// What a run needs of the platform; not owned.
struct RunServices {
    ChildProcessLauncher* launcher = nullptr;
    RunLoop* runLoop = nullptr;
    std::function<std::optional<std::string>()> enginePath; // of the auxiliary executable "Zephyr"
    std::string temporaryDirectory;                         // ends in "/"
};

/// The document's side of a run: saves first if need be, finds and starts the engine, shows its text, lets the user
/// abort, and has the results built when the engine's output ends.
///
/// One run at a time uses a temporary directory: where another one runs, a sheet says which and offers to wait.
/// Owned by its document; main thread.
class RunControl : public TaskWrapperController {
public:
    enum class State { Idle, Waiting, Running }; // Waiting: for another run in the same temporary directory

    RunControl(RunHost& host, RunServices services);
    RunControl(const RunControl&) = delete;
    RunControl& operator=(const RunControl&) = delete;
    ~RunControl() override;

    void setOutlets(const RunOutlets& outlets) { m_outlets = outlets; }

    void runSimulation();
    void simulationStartOrAbort(); // by the button's new state
    void abortSimulation();
    void documentDidSave(bool saved);
    void checkForDirtyModelDocument();
    void doRun();

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] bool isAborted() const { return m_isAborted; }
    [[nodiscard]] bool hasTask() const { return m_searchTask != nullptr; }
    /// Whether the last run's results were built without a failure.
    [[nodiscard]] bool resultsBuilt() const { return m_resultsBuilt; }
    /// Waits for its turn without asking when another run holds the temporary directory (tools without a window).
    void setWaitsForTurn(bool waits) { m_waitsForTurn = waits; }
    /// Told in place of the outlets' alerts when there are none: one line a message.
    void setMessageSink(std::function<void(const std::string&)> sink) { m_messageSink = std::move(sink); }

    void appendOutput(std::string_view text) override;
    void processStarted() override;
    void processFinished() override;

private:
    void startEngine(const std::string& enginePath);
    void askWhetherToWait(const RunLock::Holder& holder, const std::string& enginePath);
    void waitForTurn(const std::string& enginePath);
    void askWhetherToAbortRunning();
    void finish();
    void appendStatus(std::string_view text);
    void showSheet(const AlertText& text, std::function<void(std::size_t)> answered);
    void stopWaiting();

    RunHost& m_host;
    RunServices m_services;
    RunOutlets m_outlets;
    std::unique_ptr<TaskWrapper> m_searchTask; // of the current or last run
    std::optional<RunLock> m_lock;             // held from the engine's start until the table is read
    std::unique_ptr<RunLoop::Source> m_turn;   // looks whether it is our turn
    std::function<void(const std::string&)> m_messageSink;
    std::optional<Date> m_started;
    State m_state = State::Idle;
    bool m_isAborted = false;
    bool m_resultsBuilt = false;
    bool m_waitsForTurn = false;
    std::shared_ptr<int> m_alive; // expires with this object: sheets may be answered later
};

} // namespace orrery
