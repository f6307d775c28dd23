#pragma once

#include <string>
#include <vector>

namespace orrery {

/// The sample setups, by name, in the share directory beside this program's. A build has a link to the source tree's
/// there. Empty when there are none.
[[nodiscard]] std::vector<std::string> sampleSetups();

/// Whether the path is one of them.
[[nodiscard]] bool isSampleSetup(const std::string& path);

} // namespace orrery
