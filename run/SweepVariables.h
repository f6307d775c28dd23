#pragma once

#include "document/setup/SetupDictionary.h"
#include "platform/Calendar.h"
#include "run/IndependentVariable.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// The grid of a run: the setup's steppers in their order, then "day".
struct SweepGrid {
    std::vector<IndependentVariable> variables;
    std::uint32_t nRowsOfData = 0; // product of all counts
};

/// Lays out the grid that the engine sweeps.
///
/// The last variable has stride 1 and varies fastest. Values are in the port's own unit, never converted.
/// All arithmetic is single precision in the order written, because the engine counts the same way: a stepper from 0
/// to 0.7 by 0.1 has 8 values here and 7 in double precision. A count that is not a positive finite number is 0.
/// Without a start day the first day is 1.
/// @throws OrreryError with the number of rows if the grid does not fit 32 bits
[[nodiscard]] SweepGrid constructIndependentVariables(const SetupDictionary& setup, const Calendar& calendar);

/// The value of the variable at that index: start + index × step.
[[nodiscard]] float valueAtIndex(const IndependentVariable& variable, std::uint32_t index);

/// How many values a stepper takes, and a run in time, as the grid counts them; they may lie beyond 32 bits.
[[nodiscard]] double stepperCount(float start, float stop, float step);
[[nodiscard]] double dayCount(const SetupDictionary& setup);

/// Why a stepper has no values, to be put after its name.
[[nodiscard]] std::string noValuesWords(float start, float stop, float step);

/// A sentence about a setting.
struct SettingWarning {
    std::string_view key;
    std::string words;
};
/// Why a run has no values in time.
[[nodiscard]] SettingWarning noDaysWarning(const SetupDictionary& setup);

/// Which of the grid's variables have no values and why, one line each; empty when all have some.
[[nodiscard]] std::vector<std::string> sweepWarnings(const SetupDictionary& setup, const SweepGrid& grid);

} // namespace orrery
