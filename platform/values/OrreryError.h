#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace orrery {

/// Where in a user's file; lines and columns count from 1, 0 means the whole file (or line).
struct Place {
    std::string file;
    std::size_t line = 0;
    std::size_t column = 0;

    /// "crop.xml:112:7", "crop.xml:112" or "crop.xml"; empty without a file.
    [[nodiscard]] std::string text() const;
};

/// A failure that the user can act on. what() reads "place: problem remedy" on one line.
class OrreryError : public std::runtime_error {
public:
    explicit OrreryError(std::string problem, Place place = {}, std::string remedy = {});

    [[nodiscard]] const std::string& problem() const { return m_problem; }
    [[nodiscard]] const Place& place() const { return m_place; }
    [[nodiscard]] const std::string& remedy() const { return m_remedy; } // imperative, may be empty

private:
    std::string m_problem;
    Place m_place;
    std::string m_remedy;
};

/// An internal inconsistency: abandons the operation with a fixed message, which problem() and what() give.
class AssertionFailure : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

/// With a capital letter in front.
[[nodiscard]] std::string capitalized(std::string words);

} // namespace orrery
