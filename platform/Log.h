#pragma once

#include <functional>
#include <string_view>

namespace orrery {

/// Writes one line to the system log; by default standard error, in one write, with control characters escaped.
void logLine(std::string_view line);

/// Sends the log elsewhere (tests, a log window); an empty function puts standard error back. Main thread.
void setLogSink(std::function<void(std::string_view)> sink);

} // namespace orrery
