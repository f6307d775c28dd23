#include "engine/EngineRun.h"
#include "engine/Progress.h"
#include "platform/Files.h"
#include "platform/TemporaryDirectory.h"
#include "platform/values/OrreryError.h"

#include <fmt/format.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view help = R"(Zephyr, the sample engine of Orrery

  Zephyr SETUP    runs the setup file and leaves the result table Zephyr.txt in the temporary directory (TMPDIR)
  Zephyr --help   shows this

This engine is a sample: it stands in for the real one, so that Orrery can be used, shown and tested without it. It
computes expressions, delays, lookup tables, random numbers, yearly weather and file columns by the conventions of the
sample models; docs/sample-engine.md describes them. Every other part passes its inputs through.
)";

std::atomic<bool> stopRequested = false;
std::atomic<int> stopSignal = 0;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

extern "C" void requestStop(int signal) {
    stopSignal = signal;
    stopRequested = true;
}

void printLine(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
    std::fflush(stream); // whoever shows the output should see it now
}

int run(const std::string& setupPath) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGPIPE}) {
        std::signal(signal, requestStop);
    }
    orrery::engine::Progress progress([](std::string_view text) { printLine(stdout, text); }, stopRequested);
    progress.line("Zephyr (sample engine): " + setupPath);
    orrery::engine::runSetup(setupPath, orrery::temporaryDirectory(), orrery::currentCalendar(), progress);
    return 0;
}

/// Ends as the signal would have ended us, so that whoever waits sees the reason.
int endBySignal() {
    std::signal(stopSignal, SIG_DFL);
    std::raise(stopSignal);
    return 1;
}

int runReportingErrors(const std::string& setupPath) {
    try {
        return run(setupPath);
    } catch (const orrery::engine::Interrupted&) {
        return endBySignal();
    } catch (const std::bad_alloc&) {
        printLine(stderr, "Zephyr: " + setupPath + ": the run does not fit into memory. Make its grid smaller.");
    } catch (const std::exception& error) {
        printLine(stderr, std::string("Zephyr: ") + error.what());
    }
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 1 && arguments.front() == "--help") {
        std::fwrite(help.data(), 1, help.size(), stdout);
        return 0;
    }
    if (arguments.size() != 1) {
        printLine(stderr,
                  fmt::format("Zephyr: expected one argument, the setup file, but got {}. Save the setup first, "
                              "or see Zephyr --help.",
                              arguments.size()));
        return 1;
    }
    return runReportingErrors(orrery::absolutePath(arguments.front()));
}
