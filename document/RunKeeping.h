#pragma once

#include "document/DocumentFile.h"
#include "document/DocumentOutlets.h"
#include "document/DocumentServices.h"
#include "document/EngineText.h"
#include "run/RunOutcome.h"
#include "run/RunResults.h"
#include "run/results/RunRecord.h"
#include "run/results/RunStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace orrery {

/// What is known of the run that a document's results are from, and the results file that keeps them. Owned by its
/// document; main thread.
class RunKeeping {
public:
    /// Both are the document's, and outlive this.
    RunKeeping(const DocumentServices& services, const DocumentOutlets& outlets)
        : m_services(services), m_outlets(outlets) {}

    // -- A run, in this order ---------------------------------------------------------------------------------------
    /// The engine is about to be started with the setup in the file: it and the model are recorded as they are now.
    void begin(const SetupDictionary& setup, const DocumentFile& file);
    void hear(std::string_view text) { m_engineText.append(text); } // the engine printed
    /// The run has ended so, and its results are about to be read.
    void end(const RunOutcome& outcome);
    /// Reads the results of a table. One that would take more than half of the free memory is turned into a results
    /// file, and its cells stay there. @throws as readRunResults, keepTable
    [[nodiscard]] RunResults read(SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                                  const TableReadOptions& options);
    /// Keeps the results in the user's store, unless they are there, or are not of this run, or the user does not want
    /// it. A failure is told in the log, and nothing else fails because of it.
    void keep(const RunResults& results);

    // -- The results that there are ---------------------------------------------------------------------------------
    /// Writes them into a results file; false: the user did not want to wait. @throws as writeResultsFile
    bool keepAs(const RunResults& results, const std::string& path) const;
    /// The document's results are those of a results file.
    void take(const std::string& path, RunRecord record);
    /// The results file that keeps them; empty: none does.
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] const RunRecord& record() const { return m_record; }

    // -- The runs that were kept ------------------------------------------------------------------------------------
    /// Looks for the last run of the setup that was kept; of none when the path is empty.
    void lookForLastRun(const std::string& setupPath);
    [[nodiscard]] const std::optional<KeptRunInfo>& lastRun() const { return m_lastRun; }

private:
    [[nodiscard]] bool isWanted() const;
    [[nodiscard]] std::optional<std::string> pathInStore();
    [[nodiscard]] bool fitsMemory(const SweepGrid& grid, const ModelTree& tree, const std::string& tablePath) const;
    [[nodiscard]] RunResults readFromFile(SweepGrid grid, const ModelTree& tree, const std::string& tablePath,
                                          const TableReadOptions& options);
    /// false: the user did not want to wait
    bool writeWhileWaiting(const RunResults& results, const std::string& path) const;
    void keepTheLimits() const;
    void tell(std::string_view what) const;

    const DocumentServices& m_services;
    const DocumentOutlets& m_outlets;
    RunRecord m_record;
    EngineText m_engineText;
    bool m_isOwn = false; // the results are this run's, and were not yet kept
    std::string m_path;
    std::optional<KeptRunInfo> m_lastRun;
};

} // namespace orrery
