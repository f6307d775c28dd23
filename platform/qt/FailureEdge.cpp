#include "platform/qt/FailureEdge.h"

#include <unistd.h>

#include <string_view>
#include <utility>

namespace orrery {
namespace {

FailureHandler& installed() {
    static FailureHandler handler;
    return handler;
}

} // namespace

void setFailureHandler(FailureHandler handler) {
    installed() = std::move(handler);
}

void reportFailure() noexcept {
    if (!installed()) std::terminate();
    try {
        installed()(std::current_exception());
    } catch (...) {
        constexpr std::string_view line = "An operation failed, and there was not enough memory to say why.\n";
        (void)!write(STDERR_FILENO, line.data(), line.size());
    }
}

} // namespace orrery
