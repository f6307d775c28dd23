#pragma once

#include <functional>

class QObject;

namespace orrery {

/// Calls back from the event loop, when what goes on now has been done; not when `context` has gone by then.
/// On the context's thread.
void later(QObject& context, std::function<void()> callback);

} // namespace orrery
