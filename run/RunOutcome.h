#pragma once

#include "platform/values/Date.h"
#include "platform/values/ProcessEnd.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace orrery {

/// How a document's last run ended, for the words beside the start button and for the tool's exit code alike.
struct RunOutcome {
    enum class Kind {
        None,    // there was no run yet, or one is under way
        Results, // a table was read: see below whose and how much of it
        Failed,  // there was none, or it could not be read
        Aborted
    };
    Kind kind = Kind::None;
    std::uint32_t rows = 0;      // of the sweep
    std::uint32_t rowsFound = 0; // in the table, whole
    std::size_t responses = 0;
    double seconds = 0;             // from the engine's start until the table was read
    std::optional<Date> staleSince; // when the table was written, where that was not by this run
    std::string ranAt;              // when, as text, where the results were kept and have been opened
    std::string failure;            // for the middle of a sentence
    ProcessEnd end;                 // is shown to people and decides nothing: a run ends with its output

    [[nodiscard]] bool isPartial() const { return kind == Kind::Results && rowsFound < rows; }
    /// The whole table of this run was read.
    [[nodiscard]] bool isWhole() const { return kind == Kind::Results && !staleSince && !isPartial(); }
};

/// The outcome in a few words: "Done: 25,000 rows, 9 responses, 0.3 s", "Failed: the engine ended with exit code 3",
/// "Aborted", "Results of an earlier run (4 minutes old)"; empty for none.
[[nodiscard]] std::string outcomeText(const RunOutcome& outcome, const Date& now);

/// "the engine ended with exit code 3", for the middle of a sentence.
[[nodiscard]] std::string engineEndInWords(const ProcessEnd& end);

/// How the engine ended where that is worth a word: neither unknown nor exit code 0. Empty otherwise.
[[nodiscard]] std::string engineFailure(const ProcessEnd& end);

/// How long ago that was: "4 minutes", "less than a second".
[[nodiscard]] std::string ageText(const Date& date, const Date& now);

} // namespace orrery
