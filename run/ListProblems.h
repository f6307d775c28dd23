#pragma once

#include "run/NumberFaults.h"
#include "run/SetupProblems.h"

#include <vector>

namespace orrery {

/// Ports of outputs, and their result files where the setup's dimensions ask for some.
void addOutputProblems(const SetupDictionary& setup, const SetupSurroundings& surroundings, SetupProblems& problems);

/// Ports and values of initializations and steppers, and inputs that are named by more than one of them.
void addInputProblems(const SetupDictionary& setup, const SetupSurroundings& surroundings, SetupProblems& problems);

/// The mend that a fault suggests, if it does.
[[nodiscard]] std::vector<SetupMend> mendsOf(const NumberFault& fault);

} // namespace orrery
