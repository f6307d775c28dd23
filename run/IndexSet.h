#pragma once

#include "run/IndependentVariable.h"

#include <cstdint>
#include <span>
#include <vector>

namespace orrery {

/// Index of the value at which the variable is held: (constant − start) ÷ step truncated toward zero in single
/// precision, then kept within 0 … stridesPerCycle − 1 (0 when it is not a number).
[[nodiscard]] std::uint32_t heldIndex(const IndependentVariable& variable);

/// The constant that holds the variable at the value of that index: the value itself, or the next number that heldIndex
/// reads as the index, where rounding takes the value's own quotient below it.
[[nodiscard]] float heldValueAt(const IndependentVariable& variable, std::uint32_t index);

/// Rows of the current choice, ascending, each once: every value of the axis variables, the held value of all others.
/// Empty when the grid has no rows. Costs its own length.
[[nodiscard]] std::vector<std::uint32_t> currentIndexSet(std::span<const IndependentVariable> variables);

} // namespace orrery
