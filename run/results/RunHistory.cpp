#include "run/results/RunHistory.h"

#include "document/setup/SetupDifference.h"
#include "platform/values/Numbers.h"
#include "run/RunOutcome.h"

#include <fmt/format.h>

#include <cstddef>
#include <map>
#include <string_view>

namespace orrery {

std::vector<std::optional<std::string>> changesSinceRunBefore(std::span<const KeptRunInfo> runs) {
    std::vector<std::optional<std::string>> changes(runs.size());
    std::map<std::string_view, const KeptRunInfo*> runBefore; // per setup
    for (std::size_t i = runs.size(); i-- > 0;) {
        const auto [before, isFirst] = runBefore.try_emplace(runs[i].setupPath, &runs[i]);
        if (isFirst) continue;
        changes[i] = setupDifference(std::string_view(before->second->setup), std::string_view(runs[i].setup));
        before->second = &runs[i];
    }
    return changes;
}

std::string rowsText(const KeptRunInfo& run) {
    const std::string rows = groupedThousands(run.rows);
    return run.rowsFound == run.rows ? rows : fmt::format("{} of {}", groupedThousands(run.rowsFound), rows);
}

/// As engineFailure, of its words.
std::string badEnd(const KeptRunInfo& run) {
    const bool isGood =
        run.engineEnd == engineEndInWords({ProcessEnd::Kind::Exited, 0}) || run.engineEnd == engineEndInWords({});
    return isGood ? "" : run.engineEnd;
}

} // namespace orrery
