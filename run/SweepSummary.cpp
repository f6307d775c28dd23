#include "run/SweepSummary.h"

#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"

#include <fmt/format.h>

namespace orrery {

namespace {

/// Of an estimate: not finer than a tenth, and to the nearest.
std::string bytesText(double bytes) {
    if (bytes < 0.95e5) return "less than 0.1 MB";
    return bytes < 0.95e9 ? fmt::format("about {:.1f} MB", bytes / 1e6) : fmt::format("about {:.1f} GB", bytes / 1e9);
}

std::string gridSizeText(const SweepGrid& grid, std::size_t responses) {
    constexpr double bytesPerField = 10; // a number of up to nine digits and its tab; short ones are less
    const auto fields = static_cast<double>(grid.variables.size() + 1 + responses);
    return fmt::format("{}, {}", gridSizeText(grid), bytesText(grid.nRowsOfData * fields * bytesPerField));
}

} // namespace

std::string gridSizeText(const SweepGrid& grid) {
    std::string counts;
    for (const IndependentVariable& variable : grid.variables) {
        counts += fmt::format("{}{}", counts.empty() ? "" : " × ", groupedThousands(variable.stridesPerCycle()));
    }
    if (grid.variables.size() > 1) counts += " = " + groupedThousands(grid.nRowsOfData);
    return counts + (grid.nRowsOfData == 1 ? " row" : " rows");
}

std::string sweepSummary(const SetupDictionary& setup, const Calendar& calendar, std::size_t responses) {
    try {
        return gridSizeText(constructIndependentVariables(setup, calendar), responses);
    } catch (const OrreryError&) {
        return {}; // which is one of the problems shown
    }
}

} // namespace orrery
