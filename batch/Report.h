#pragma once

#include "run/IndependentVariable.h"
#include "run/ResponseVariable.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orrery {

/// What a report tells of. Nothing is owned.
struct ReportSource {
    std::span<const IndependentVariable> variables;
    std::span<const ResponseVariable> responses; // one per column of the cells
    std::uint32_t nRowsOfData;
    std::span<const float> cells;
    std::vector<std::string> files; // what was read and left
};

/// The results for a person at a terminal: the grid, then per response minimum, mean, maximum and the course of its
/// mean over the first sweep variable in block characters. Values that are not finite take no part.
[[nodiscard]] std::string reportText(const ReportSource& source);

/// The values as block characters between the least and the greatest of them, at most `width`; neighbours share a
/// character where there are more. A blank stands where no value is finite.
[[nodiscard]] std::string blockCourse(std::span<const double> values, std::size_t width);

} // namespace orrery
