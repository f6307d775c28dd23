#pragma once

#include "run/RunResults.h"

#include <string>
#include <vector>

namespace orrery {

/// What dimensions and variables of a results file are called: the last part of each port's path, in letters that every
/// program takes, and each name once.
struct GridNames {
    std::vector<std::string> dimensions; // per sweep variable
    std::vector<std::string> responses;
};

/// Of the mask of rows found, which no port may take.
inline constexpr const char* maskName = "row_found";

[[nodiscard]] GridNames gridNames(const RunResults& results);

} // namespace orrery
