#pragma once

#include <string>

namespace orrery {

/// Why a call of the system failed, in words for its user that go on a sentence; the system's own for a rare `errno`.
[[nodiscard]] std::string systemReason(int error);

} // namespace orrery
