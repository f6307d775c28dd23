#pragma once

#include <string>
#include <vector>

namespace orrery {

/// The sample setups, by name, where this program has them: in its installation's share directory or, for one that runs
/// where it was built, in the source tree. Empty when there are none.
[[nodiscard]] std::vector<std::string> sampleSetups();

} // namespace orrery
