#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// Why a text is not the number or pair that it stands for, to be put after the name of its place.
struct NumberFault {
    std::string words;  // "is empty and counts as 0"
    std::string mended; // the text that was perhaps meant; may be empty
};

/// @param countsAs what a text without a number counts as, such as "0"; empty where another program reads it
[[nodiscard]] std::optional<NumberFault> numberFault(std::string_view text, std::string_view countsAs);

/// The same for an initial value, which may be a sequence of numbers in braces. The engine reads it.
[[nodiscard]] std::optional<NumberFault> sequenceFault(std::string_view text);

/// The same for a pair in the point form.
[[nodiscard]] std::optional<NumberFault> pairFault(std::string_view text);

/// A stepper whose stop is not among its values.
struct StopOffGrid {
    float last = 0;                 // of its values
    bool isRounding = false;        // the stop lies on the grid for everyone who does not count in single precision
    std::vector<std::string> stops; // that lie on the grid: the last value and the next one, where they can be written
};

/// std::nullopt where the stop is the last value but for rounding, or where there are no values.
[[nodiscard]] std::optional<StopOffGrid> stopOffGrid(float start, float stop, float step);

} // namespace orrery
