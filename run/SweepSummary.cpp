#include "run/SweepSummary.h"

#include "platform/OrreryError.h"
#include "run/SweepVariables.h"

#include <fmt/format.h>

namespace orrery {

namespace {

std::string groupedThousands(std::uint64_t number) {
    std::string digits = fmt::format("{}", number);
    for (auto place = static_cast<std::ptrdiff_t>(digits.size()) - 3; place > 0; place -= 3) {
        digits.insert(static_cast<std::size_t>(place), ",");
    }
    return digits;
}

std::string bytesText(double bytes) {
    if (bytes < 0.95e5) return "less than 0.1 MB";
    return bytes < 0.95e9 ? fmt::format("about {:.1f} MB", bytes / 1e6) : fmt::format("about {:.1f} GB", bytes / 1e9);
}

std::string sizeText(const SweepGrid& grid, std::size_t responses) {
    constexpr double bytesPerField = 10; // a number of up to nine digits and its tab; short ones are less
    const auto fields = static_cast<double>(grid.variables.size() + 1 + responses);
    std::string counts;
    for (const IndependentVariable& variable : grid.variables) {
        counts += fmt::format("{}{}", counts.empty() ? "" : " × ", groupedThousands(variable.stridesPerCycle()));
    }
    if (grid.variables.size() > 1) counts += " = " + groupedThousands(grid.nRowsOfData);
    return fmt::format("{} {}, {}", counts, grid.nRowsOfData == 1 ? "row" : "rows",
                       bytesText(grid.nRowsOfData * fields * bytesPerField));
}

} // namespace

SweepSummary summarizeSweep(const SetupDictionary& setup, const Calendar& calendar, std::size_t responses) {
    try {
        const SweepGrid grid = constructIndependentVariables(setup, calendar);
        return {sizeText(grid, responses), sweepWarnings(setup, grid)};
    } catch (const OrreryError& error) {
        return {"", {error.what()}};
    }
}

} // namespace orrery
