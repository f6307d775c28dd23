#pragma once

#include "document/DocumentFile.h"
#include "document/DocumentMessages.h"
#include "document/DocumentModel.h"
#include "document/DocumentOutlets.h"
#include "document/DocumentServices.h"
#include "document/RunKeeping.h"
#include "document/SetupEditing.h"
#include "document/StartedSetup.h"
#include "run/PlotChoices.h"
#include "run/RunResults.h"

#include <functional>
#include <string>
#include <vector>

namespace orrery {

/// What a result table is read by, of the document that reads it. Nothing is owned.
struct ReadingSource {
    const SetupEditing& setup;
    const DocumentModel& model;
    RunKeeping& keeping;
    const DocumentOutlets& outlets;
    const DocumentServices& services;
    const DocumentMessages& messages;
};

/// The results of a document's last run: by which grid its table is read, what was read, and what the user had chosen
/// to plot of the results before. Owned by its document; main thread.
class ResultReading {
public:
    /// `replaced` is called before other numbers take the place of those that a plot may have been built of.
    ResultReading(ReadingSource source, std::function<void()> replaced)
        : m_source(source), m_replaced(std::move(replaced)) {}
    ResultReading(const ResultReading&) = delete;
    ResultReading& operator=(const ResultReading&) = delete;
    ~ResultReading() = default;

    [[nodiscard]] RunResults& results() { return m_results; }
    [[nodiscard]] const RunResults& results() const { return m_results; }
    [[nodiscard]] std::string tablePath() const;

    /// Reads the last run's table by the grid that is chosen, in one go: a failure leaves the new grid and nothing else
    /// behind. @throws ResultTableMissing after its alert, OrreryError
    const RunResults& build();
    /// Shows results that were kept, of which all is known.
    void show(RunResults results);
    /// By which grid the results are read, and how that differs from the setup which ran.
    [[nodiscard]] const GridChoice& gridChoice() const { return m_gridChoice; }
    /// Chooses the other grid: that of the setup which ran, or the document's. Nothing where the two agree. `rebuild`
    /// has the results built by it; the choice is taken back when it returns false.
    void chooseOtherGrid(const std::function<bool()>& rebuild);
    /// A run begins, of the setup as it is in its file now.
    void keepStarted(const DocumentFile& file);
    /// Clears the sweep variables for a run; what was chosen of them to plot comes back with its results.
    void clearSweep();

    // Each step and part of the results alone.
    void constructIndependentVariables();
    void constructDependentVariables(); // @throws as build
    void getSimulationData();           // @throws OrreryError
    void setIndependentVariables(std::vector<IndependentVariable> variables);
    void setDependentVariables(std::vector<ResponseVariable> variables);
    void setSimulationData(CellBlock data);
    /// Shows the variables' rows anew.
    void reloadSettings() const;

private:
    void setResults(RunResults results);
    [[nodiscard]] std::vector<std::string> layOutGrid();
    void readTable(const std::function<void(const TableReadOptions&)>& read) const;
    void readWhileWaiting(const std::function<void(const TableReadOptions&)>& read) const;
    void keepPlotChoices();
    void restorePlotChoices();

    ReadingSource m_source;
    std::function<void()> m_replaced;
    StartedSetup m_startedSetup; // of the present or last run
    GridChoice m_gridChoice;
    RunResults m_results;
    PlotChoices m_earlierChoices; // of the last run that had any
};

} // namespace orrery
