#include "platform/Log.h"

#include "platform/values/Utf8.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace orrery {
namespace {

std::function<void(std::string_view)>& sink() {
    static std::function<void(std::string_view)> function;
    return function;
}

} // namespace

void logLine(std::string_view line) {
    std::string text = escapedForLine(line);
    if (sink()) {
        sink()(text);
        return;
    }
    text += '\n';
    for (std::string_view rest = text; !rest.empty();) { // one write, unless the system takes only a part of it
        const ssize_t count = write(STDERR_FILENO, rest.data(), rest.size());
        if (count < 0 && errno != EINTR) return; // there is nowhere left to tell
        if (count > 0) rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

void setLogSink(std::function<void(std::string_view)> newSink) {
    sink() = std::move(newSink);
}

} // namespace orrery
