#pragma once

namespace orrery {

/// The program's icon, and our own icons in place of those that the desktop's theme lacks.
void useOwnIcons();

} // namespace orrery
