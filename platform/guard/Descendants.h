#pragma once

namespace orrery {

/// Signals every process that descends from this one, also in other groups and sessions. Only they are reached: a
/// number that was given to a stranger meanwhile is noticed. @return whether the processes could be listed
bool signalDescendants(int signal);

} // namespace orrery
