#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace orrery {

/// The text of one row after its leading fields, without its line feed. Nothing is owned.
struct RowText {
    const char* begin = nullptr;
    const char* end = nullptr;
    const char* readableEnd = nullptr; // bytes up to here may be read ahead; not before `end`
    bool mayBeCut = false;             // the table ended in this row: a number that touches `end` counts as none
};

/// Fills the cells from the row's text, 0 where no number was left.
///
/// For each cell tabs, commas, spaces and carriage returns are skipped, then everything up to a digit, "-" or "." is
/// passed over. A "{" in what was passed over makes the cell the sum of all numbers that follow one another; otherwise
/// it is the one number there. A "-" or "." that begins no number is never passed, so the rest of its row is 0.
/// @return the number of cells that got no number
[[nodiscard]] std::size_t scanRow(const RowText& row, std::span<float> cells);

/// One cell of a row.
struct ScannedCell {
    float value = 0;
    bool found = false;        // false: the cell got no number
    const char* end = nullptr; // the next cell is scanned from here
};

/// The first cell of the row's text, as scanRow has it.
[[nodiscard]] ScannedCell scanCell(const RowText& row);

/// Whether text that stands between two cells makes no difference to the second: it holds nothing that begins a number
/// or a group.
[[nodiscard]] bool isIdle(const char* begin, const char* end);

/// number × 10^power as the nearest single; std::nullopt where the short calculation cannot prove that it is: the exact
/// conversion must be asked.
[[nodiscard]] std::optional<float> nearestSingle(std::uint64_t number, int power);

/// Passes over up to `fields` tokens without white space, white space (line feeds included) before each. Counts
/// `fields` down by the tokens passed and returns where it stopped: after the last token, or `end`.
[[nodiscard]] const char* passOverFields(const char* begin, const char* end, std::size_t& fields);

} // namespace orrery
