#pragma once

#include "document/setup/SetupPlace.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orrery {

/// One way to be rid of a problem: its place takes the value.
struct SetupMend {
    std::string label; // "Use 1.5"
    std::string value;
    friend bool operator==(const SetupMend&, const SetupMend&) = default;
};

/// What is wrong with a setup, in a sentence for the user, and where. A warning: nobody is kept from running it.
struct SetupProblem {
    std::string words;
    SetupPlace place;
    std::vector<SetupMend> mends = {}; // there may be none, or several to choose from
    friend bool operator==(const SetupProblem&, const SetupProblem&) = default;
};

/// All problems of a setup. Only the first are written out: nobody reads a hundred thousand.
struct SetupProblems {
    static constexpr std::size_t mostShown = 100;

    std::vector<SetupProblem> shown;
    std::size_t more = 0; // that are not shown

    /// `problem` makes it, where it is still shown.
    template <typename Make>
    void add(const Make& problem) {
        shown.size() < mostShown ? shown.push_back(problem()) : void(++more);
    }
    /// Adds another's problems after these.
    void append(SetupProblems others);
    /// "and 12 more problems"; empty where all are shown.
    [[nodiscard]] std::string moreWords() const;
    friend bool operator==(const SetupProblems&, const SetupProblems&) = default;
};

} // namespace orrery
