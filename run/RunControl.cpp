#include "run/RunControl.h"

#include "platform/Calendar.h"
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/values/OrreryError.h"
#include "run/table/ResultTable.h"

#include <fmt/format.h>

#include <chrono>
#include <exception>
#include <new>
#include <utility>
#include <variant>

namespace orrery {

namespace {

constexpr auto turnInterval = std::chrono::milliseconds(100);

// Buttons of the unsaved-changes alert, in its order.
enum SaveAnswer : std::size_t { Save = 0, Cancel = 1, DontSave = 2 };

const AlertText unsavedChanges{"The Orrery Document has unsaved changes.",
                               "Save before running simulation?",
                               {"Save", "Cancel", "Don't Save"},
                               Severity::Question,
                               Save};
constexpr std::string_view noRun = "The simulation cannot be run.";
const AlertText engineMissing{"Error", "Couldn't find Zephyr.", {"OK"}};
const AlertText alreadyRunning{"A simulation of this document is running.",
                               "Abort it and start again? Its results will not be read.",
                               {"Abort and Run", "Cancel"}};

AlertText someoneElseRuns(const RunLock::Holder& holder) {
    const std::string who = holder.description.empty() ? "Another simulation" : holder.description;
    const std::string process = holder.processId > 0 ? fmt::format(" (process {})", holder.processId) : "";
    return {"Another simulation is running.",
            fmt::format("{}{} uses the temporary directory, which holds one result table. Wait for it to end, or "
                        "start Orrery with another temporary directory (TMPDIR).",
                        who, process),
            {"Wait", "Cancel"},
            Severity::Question,
            0};
}

} // namespace

RunControl::RunControl(RunHost& host, RunServices services) : m_host(host), m_services(std::move(services)) {}

RunControl::~RunControl() {
    if (m_searchTask) m_searchTask->clearController();
}

void RunControl::runSimulation() {
    if (m_state == State::Running) {
        askWhetherToAbortRunning();
        return;
    }
    if (!m_host.hasUnsavedChanges()) {
        m_host.isUnsavedCopy() ? saveCopyAndRun() : checkForDirtyModelDocument();
        return;
    }
    if (m_outlets.alerts == nullptr) {
        showSheet({unsavedChanges.message, "Save it before running the simulation.", {"OK"}}, {});
        return;
    }
    switch (m_outlets.alerts->runModal(unsavedChanges)) {
    case Save:
        m_host.saveDocument([this, alive = std::weak_ptr<int>(m_alive)](bool saved) {
            if (!alive.expired()) documentDidSave(saved);
        });
        break;
    case DontSave:
        checkForDirtyModelDocument();
        break;
    default:
        break;
    }
}

/// The name that it is saved under is all there is to ask; without one there is nothing to run.
void RunControl::saveCopyAndRun() {
    m_host.saveDocument([this, alive = std::weak_ptr<int>(m_alive)](bool saved) {
        if (alive.expired()) return;
        saved ? checkForDirtyModelDocument() : setButton(m_state == State::Idle ? ButtonState::Off : ButtonState::On);
    });
}

void RunControl::documentDidSave(bool /*saved*/) {
    // The engine reads whatever file exists, so a failed save, which was reported, does not stop the run.
    checkForDirtyModelDocument();
}

void RunControl::checkForDirtyModelDocument() {
    doRun();
}

void RunControl::doRun() {
    if (m_state == State::Running) {
        askWhetherToAbortRunning();
        return;
    }
    if (!m_services.temporaryDirectoryFault.empty()) {
        setButton(ButtonState::Off);
        showSheet({std::string(noRun), m_services.temporaryDirectoryFault, {"OK"}}, {});
        return;
    }
    const std::optional<std::string> enginePath = m_services.enginePath();
    if (!enginePath) {
        logLine("Couldn't find Zephyr");
        showSheet(engineMissing, {});
        return;
    }
    if (!m_host.mayRun()) {
        setButton(ButtonState::Off);
        return;
    }
    startWhenFree(*enginePath);
}

void RunControl::simulationStartOrAbort() {
    switch (m_outlets.startStopButton->state()) {
    case ButtonState::On:
        runSimulation();
        break;
    case ButtonState::Off:
        abortSimulation();
        break;
    case ButtonState::Mixed:
        break;
    }
}

void RunControl::abortSimulation() {
    m_isAborted = true;
    if (isWaiting()) endWait();
    if (m_searchTask) m_searchTask->stopProcess();
}

void RunControl::askWhetherToAbortRunning() {
    showSheet(alreadyRunning, [this](std::size_t button) {
        if (button != 0) return;
        abortSimulation();
        runSimulation();
    });
}

void RunControl::startWhenFree(const std::string& enginePath) {
    auto turn = tryTurn();
    if (!turn) return;
    if (auto* ours = std::get_if<RunLock>(&*turn)) {
        startEngine(enginePath, std::move(*ours));
        return;
    }
    const auto& holder = std::get<RunLock::Holder>(*turn);
    if (waitFor(holder) == State::Ending) {
        waitForTurn(enginePath, State::Ending);
    } else if (m_waitsForTurn) {
        if (!isWaiting() && m_services.message) {
            const AlertText text = someoneElseRuns(holder);
            m_services.message(fmt::format("{} {}", text.message, text.informative));
        }
        waitForTurn(enginePath, State::Waiting);
    } else {
        askWhetherToWait(holder, enginePath);
    }
}

/// The lock or who has it; none when the reason why there can be no run has been shown, and any wait is over.
std::optional<std::variant<RunLock, RunLock::Holder>> RunControl::tryTurn() {
    std::string failure;
    try {
        return RunLock::tryAcquire(m_services.temporaryDirectory, m_host.filePath().value_or("untitled setup"));
    } catch (const OrreryError& error) {
        failure = error.what();
    }
    endWait();
    showSheet({std::string(noRun), failure, {"OK"}}, {});
    return std::nullopt;
}

/// What we wait for while that one runs.
RunControl::State RunControl::waitFor(const RunLock::Holder& holder) const {
    const bool isOwn = holder.run != 0 && holder.run == m_lastRun.run && holder.processId == m_lastRun.processId;
    return isOwn ? State::Ending : State::Waiting;
}

void RunControl::askWhetherToWait(const RunLock::Holder& holder, const std::string& enginePath) {
    showSheet(someoneElseRuns(holder), [this, enginePath](std::size_t button) {
        if (m_state == State::Running) return; // an earlier wait has come to its end while the sheet was open
        if (button == 0) {
            waitForTurn(enginePath, State::Waiting);
        } else {
            endWait();
        }
    });
}

void RunControl::waitForTurn(const std::string& enginePath, State state) {
    m_turn = m_services.runLoop->repeat(turnInterval, [this, enginePath] { lookForTurn(enginePath); });
    setButton(ButtonState::On);
    setState(state);
}

void RunControl::lookForTurn(const std::string& enginePath) {
    auto turn = tryTurn();
    if (!turn) return;
    if (auto* ours = std::get_if<RunLock>(&*turn)) {
        const auto keptToTheEnd = std::move(m_turn); // the timer's callback and its path go with it
        startEngine(enginePath, std::move(*ours));
    } else if (const State now = waitFor(std::get<RunLock::Holder>(*turn)); now != m_state) {
        setState(now);
    }
}

void RunControl::endWait() {
    m_turn.reset();
    setButton(ButtonState::Off);
    setState(State::Idle);
}

void RunControl::startEngine(const std::string& enginePath, RunLock lock) {
    m_turn.reset();
    m_lastRun = lock.holder();
    m_lock = std::move(lock);
    m_isAborted = false;
    m_outcome = {};
    m_tableRead.reset();
    try {
        m_tableBefore = tableNow();
        if (m_tableBefore) awaitNewStamp(*m_tableBefore);
        m_started = std::chrono::steady_clock::now();
        m_host.keepStartedSetup();
        m_host.clearSweepForRun();
        setButton(ButtonState::On);
        makeTask(enginePath);
        logLine("Starting task.");
        setState(State::Running);
        m_searchTask->startProcess();
    } catch (...) {
        if (m_searchTask) m_searchTask->clearController();
        m_searchTask.reset();
        m_lock.reset();
        endWait();
        throw;
    }
}

void RunControl::makeTask(const std::string& enginePath) {
    m_searchTask.reset();
    std::vector<std::string> arguments = {enginePath};
    if (auto path = m_host.filePath()) arguments.push_back(*path);
    m_searchTask =
        std::make_unique<TaskWrapper>(this, std::move(arguments), *m_services.launcher, m_lock->descriptors());
}

void RunControl::processStarted() {
    m_outlets.statusView->setString("");
    m_outlets.progressWheel->startAnimation();
}

void RunControl::appendOutput(std::string_view text) {
    m_host.engineWrote(text);
    appendStatus(text);
}

/// Whatever fails on the way, the run is over afterwards.
void RunControl::processFinished() {
    std::exception_ptr failure;
    try {
        takeEnd();
    } catch (...) {
        failure = std::current_exception();
    }
    m_lock.reset();
    m_outlets.progressWheel->stopAnimation();
    setButton(ButtonState::Off);
    m_outlets.statusView->setNeedsDisplay();
    if (m_outlets.alerts != nullptr) m_outlets.alerts->requestUserAttention();
    setState(State::Idle);
    if (failure) std::rethrow_exception(failure);
}

void RunControl::takeEnd() {
    if (m_isAborted) {
        m_outcome.kind = RunOutcome::Kind::Aborted;
        appendStatus("Aborted");
    } else {
        appendStatus("Processing output\u2026");
        if (const std::string how = engineFailure(m_outcome.end); !how.empty())
            appendStatus("\n" + capitalized(how) + ".");
        finishResults();
    }
}

void RunControl::finishResults() {
    m_outcome.kind = RunOutcome::Kind::Failed;
    try {
        if (m_lock) requireOwnTable();
        buildResults();
    } catch (const ResultTableMissing& missing) {
        // The document has shown its alert already.
        m_outcome.failure = "the engine left no result table";
        appendStatus(fmt::format("\n{}", missing.what()));
    } catch (const ResultsCancelled&) {
        m_isAborted = true;
        m_outcome.kind = RunOutcome::Kind::Aborted;
        m_host.clearSweepForRun();
        appendStatus("\nAborted");
    } catch (const std::bad_alloc&) {
        failResults("The results need more memory than is available.");
    } catch (const std::exception& error) {
        failResults(error.what());
    }
}

/// Where the lock was lost, another run may have written the table.
void RunControl::requireOwnTable() {
    switch (m_lock->standing()) {
    case RunLock::Standing::Whole:
        return;
    case RunLock::Standing::FileLost:
        appendStatus(fmt::format("\n{}: the lock of this run was removed or replaced while the engine ran; the lock of "
                                 "the directory has kept other runs out.",
                                 m_lock->path()));
        return;
    case RunLock::Standing::Lost:
        throw OrreryError("The lock of this run was removed or replaced while the engine ran. The table may be another "
                          "run's, so it was not read.",
                          {m_lock->path()},
                          "Run again, and let nothing clear the temporary directory in the meantime.");
    }
}

void RunControl::buildResults() {
    m_tableRead = tableNow();
    m_outcome.staleSince.reset();
    if (m_tableRead && m_tableRead == m_tableBefore) {
        m_outcome.staleSince = m_tableRead->modified;
        appendStatus(fmt::format("\nThe result table was not written by this run: it is {} old.",
                                 ageText(m_tableRead->modified, currentDate())));
    }
    takeResults(m_host.buildResults());
    m_outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_started).count();
}

void RunControl::takeResults(const RunResults& built) {
    for (const std::string& note : built.notes) {
        appendStatus("\n" + note);
    }
    m_outcome.kind = RunOutcome::Kind::Results;
    m_outcome.rows = built.grid.nRowsOfData;
    m_outcome.rowsFound = built.table.rowsFound;
    m_outcome.responses = built.responses.variables.size();
}

bool RunControl::rebuildResults() {
    if (m_state != State::Idle || !m_tableRead) return false;
    if (m_tableRead != tableNow()) {
        showSheet({"The results cannot be read again.",
                   "The result table has been written since, by another run. Run the simulation again."},
                  {});
        return false;
    }
    const RunOutcome before = m_outcome;
    finishResults();
    m_outcome.seconds = before.seconds;
    setState(State::Idle);
    return true;
}

void RunControl::showKept(const RunResults& results, std::string ranAt) {
    requireIdle();
    m_outcome = {};
    m_tableRead.reset();
    takeResults(results);
    m_outcome.ranAt = std::move(ranAt);
    setState(State::Idle);
}

void RunControl::requireIdle() const {
    if (m_state == State::Idle) return;
    throw OrreryError("A simulation of this document is running.", {}, "Wait for its end, or stop it first.");
}

void RunControl::failResults(const std::string& reason) {
    m_outcome.failure = "the results could not be read";
    appendStatus("\n" + reason);
    showSheet({"The results could not be read.", reason, {"OK"}}, {});
}

std::optional<FileIdentity> RunControl::tableNow() const {
    return fileIdentity(resultTablePath(m_services.temporaryDirectory));
}

void RunControl::appendStatus(std::string_view text) {
    m_outlets.statusView->appendString(text);
}

void RunControl::showSheet(const AlertText& text, std::function<void(std::size_t)> answered) {
    if (m_outlets.alerts == nullptr) {
        if (m_services.message) m_services.message(fmt::format("{} {}", text.message, text.informative));
        return;
    }
    m_outlets.alerts->beginSheet(
        text, [alive = std::weak_ptr<int>(m_alive), answered = std::move(answered)](std::size_t button) {
            if (!alive.expired() && answered) answered(button);
        });
}

void RunControl::setButton(ButtonState state) {
    m_outlets.startStopButton->setState(state);
}

void RunControl::setState(State state) {
    m_state = state;
    m_host.runStateChanged();
}

} // namespace orrery
