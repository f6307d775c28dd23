#pragma once

#include "document/setup/SetupDictionary.h"
#include "platform/Calendar.h"
#include "run/SweepVariables.h"

#include <optional>
#include <string>

namespace orrery {

/// The setup that the engine was started with: its file as that was then. The document may have been edited since, or
/// never have been saved as it is.
class StartedSetup {
public:
    StartedSetup() = default; // nothing is known
    /// Reads the setup file now. One that cannot be read, or is not a setup, leaves nothing known but why.
    explicit StartedSetup(const std::string& path);

    /// The grid that ran; none where it is not known.
    [[nodiscard]] std::optional<SweepGrid> grid(const Calendar& calendar) const;
    /// What a user should know whose results are read by the same grid: that other values of the document's setup are
    /// not those that ran, or that nothing is known of them. Empty where all is well.
    [[nodiscard]] std::string note(const SetupDictionary& documentsSetup) const;

private:
    std::optional<SetupDictionary> m_setup;
    std::string m_fault; // why the file tells nothing
};

/// By which grid the results of the last run are read.
struct GridChoice {
    bool ofStarted = false; // that of the setup which ran, not that of the document's
    std::string difference; // between the two, "… rows, not … rows"; empty where there is none

    [[nodiscard]] std::string text() const; // for the user; empty without a difference
};

/// In words, how the grid that ran differs from the document's; empty where it does not.
[[nodiscard]] std::string gridDifference(const SweepGrid& ran, const SweepGrid& documents);

} // namespace orrery
