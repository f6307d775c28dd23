#pragma once

#include "platform/UserDefaults.h"
#include "run/results/RunStore.h"

namespace orrery {

/// What becomes of a run's results, as the user prefers it.
struct KeepingPreferences {
    bool keeps = true; // every run, in the user's store
    StoreLimits limits;
};

[[nodiscard]] KeepingPreferences keepingPreferences(const UserDefaults& defaults);
void setKeepingPreferences(UserDefaults& defaults, const KeepingPreferences& preferences);

} // namespace orrery
