#pragma once

#include <exception>
#include <functional>

namespace orrery {

/// Is given what left a slot, a timer or a callback. May itself throw.
using FailureHandler = std::function<void(const std::exception_ptr&)>;

/// One for the program, set on the main thread by whoever runs its loop. Without one a failure ends the program.
void setFailureHandler(FailureHandler handler);

/// Hands the exception that is being handled to the handler, for a catch clause where none may pass: Qt's loop lets no
/// exception through. When the handler fails as well, that is said in a line on standard error and no more is done.
void reportFailure() noexcept;

} // namespace orrery
