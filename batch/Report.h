#pragma once

#include "run/RunResults.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace orrery {

/// The results for a person at a terminal: the grid, then per response minimum, mean, maximum and the course of its
/// mean over the first sweep variable in block characters, then the files that were read and left. Values that are not
/// finite take no part.
[[nodiscard]] std::string reportText(const RunResults& results, const std::vector<std::string>& files);

/// The values as block characters between the least and the greatest of them, at most `width`; neighbours share a
/// character where there are more. A blank stands where no value is finite.
[[nodiscard]] std::string blockCourse(std::span<const double> values, std::size_t width);

} // namespace orrery
