#pragma once

#include "platform/SystemReason.h"
#include "platform/values/OrreryError.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace orrery {

/// Calls again while a signal interrupts the call.
template <class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// The system would cut such a path at its NUL and take another file.
inline void requireNoNul(const std::string& path) {
    if (path.find('\0') == std::string::npos) return;
    throw OrreryError("The path contains a NUL character.", {path}, "Choose another name.");
}

} // namespace orrery
