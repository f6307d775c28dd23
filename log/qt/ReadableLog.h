#pragma once

namespace orrery {

/// Has log views answer readers of the screen with the end of their text. Again is as good as once.
void installLogAccessibility();

} // namespace orrery
