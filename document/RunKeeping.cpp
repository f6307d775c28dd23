#include "document/RunKeeping.h"

#include "document/KeepingPreferences.h"
#include "platform/Calendar.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "run/ResultsMark.h"
#include "run/results/ResultsFile.h"

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <utility>
#include <vector>

namespace orrery {

namespace {

constexpr const char* notKept = "\nThe results were not kept: {}";

struct KeepingCancelled {}; // the user does not want to wait

/// A results file that is read while it is open, and goes with the program, whatever becomes of that.
KeptRun openAndUnlink(const std::string& path) {
    KeptRun opened = openResultsFile(path);
    (void)std::remove(path.c_str());
    return opened;
}

} // namespace

void RunKeeping::begin(const SetupDictionary& setup, const DocumentFile& file) {
    m_record = recordOfSetup(setup, file.absolutePath());
    m_record.enginePath = m_services.run.enginePath ? m_services.run.enginePath().value_or("") : "";
    m_record.started = dateDescription(currentDate());
    m_engineText = {};
    m_isOwn = true;
    m_path.clear();
}

void RunKeeping::end(const RunOutcome& outcome) {
    m_record.engineEnd = engineEndInWords(outcome.end);
    m_record.engineText = m_engineText.text();
    m_record.ended = dateDescription(currentDate());
    m_isOwn = m_isOwn && !outcome.staleSince;
    m_path.clear(); // what is read now may be read otherwise than before
}

bool RunKeeping::isWanted() const {
    return m_isOwn && !m_services.storeDirectory.empty() &&
           (m_services.userDefaults == nullptr || keepingPreferences(*m_services.userDefaults).keeps);
}

bool RunKeeping::fitsMemory(const SweepGrid& grid, const ModelTree& tree, const std::string& tablePath) const {
    const std::size_t columns = readResponses(grid, tree, tablePath).responses.variables.size();
    const std::uint64_t bytes = std::uint64_t{grid.nRowsOfData} * columns * sizeof(float);
    return bytes <= (m_services.largestHeldTable != 0 ? m_services.largestHeldTable : availableMemory() / 2);
}

RunResults RunKeeping::read(SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                            const TableReadOptions& options) {
    if (fitsMemory(grid, tree, tablePath)) return readRunResults(std::move(grid), tree, tablePath, options);
    return readFromFile(std::move(grid), tree, tablePath, options);
}

/// Where to keep the results, once; std::nullopt when they are not to be kept, or cannot, which is told.
std::optional<std::string> RunKeeping::pathInStore() {
    if (!isWanted()) return std::nullopt;
    m_isOwn = false;
    try {
        return RunStore(m_services.storeDirectory).newPath(m_record.setup.path, m_record.started);
    } catch (const std::exception& failure) {
        tell(fmt::format(notKept, failure.what()));
        return std::nullopt;
    }
}

/// Of a run that is not kept, the file is beside the table, which was large enough to fit there, too.
RunResults RunKeeping::readFromFile(SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                                    const TableReadOptions& options) {
    const std::optional<std::string> kept = pathInStore();
    const std::string path = kept.value_or(tablePath + resultsFileEnding);
    keepTable(path, std::move(grid), tree, tablePath, m_record, options);
    if (!kept) return openAndUnlink(path).results;
    RunResults results = openResultsFile(path).results;
    m_path = path;
    keepTheLimits();
    return results;
}

void RunKeeping::keep(const RunResults& results) {
    const std::optional<std::string> path = results.grid.nRowsOfData != 0 ? pathInStore() : std::nullopt;
    if (!path) return;
    try {
        if (!writeWhileWaiting(results, *path)) {
            tell(fmt::format(notKept, "that was cancelled. Keep them with File > Keep Results As… if you want them."));
            return;
        }
    } catch (const std::exception& failure) {
        tell(fmt::format(notKept, failure.what()));
        return;
    }
    m_path = *path;
    keepTheLimits();
}

bool RunKeeping::writeWhileWaiting(const RunResults& results, const std::string& path) const {
    WaitPanel* panel = m_outlets.waitPanel;
    if (panel == nullptr) {
        writeResultsFile(path, results, m_record);
        return true;
    }
    const PanelWait open(*panel, "Keeping the results…");
    try {
        writeResultsFile(path, results, m_record, [panel](double part) {
            if (!panel->update(part)) throw KeepingCancelled();
        });
    } catch (const KeepingCancelled&) {
        return false;
    }
    return true;
}

void RunKeeping::keepTheLimits() const {
    const KeepingPreferences preferences =
        m_services.userDefaults != nullptr ? keepingPreferences(*m_services.userDefaults) : KeepingPreferences();
    try {
        (void)RunStore(m_services.storeDirectory).applyLimits(preferences.limits, m_path);
    } catch (const std::exception& failure) {
        tell(fmt::format("\nOlder runs could not be removed: {}", failure.what()));
    }
}

bool RunKeeping::keepAs(const RunResults& results, const std::string& path) const {
    return writeWhileWaiting(results, path);
}

void RunKeeping::take(const std::string& path, RunRecord record) {
    m_path = path;
    m_record = std::move(record);
    m_isOwn = false;
}

void RunKeeping::lookForLastRun(const std::string& setupPath) {
    m_lastRun.reset();
    if (setupPath.empty() || m_services.storeDirectory.empty()) return;
    try {
        std::vector<KeptRunInfo> runs = RunStore(m_services.storeDirectory).runs(setupPath);
        if (!runs.empty()) m_lastRun = std::move(runs.front());
    } catch (const OrreryError&) { // the list of runs, where somebody asked for them, says why
    }
}

void RunKeeping::tell(std::string_view what) const {
    m_outlets.statusView->appendString(what);
}

} // namespace orrery
