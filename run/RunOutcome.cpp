#include "run/RunOutcome.h"

#include "platform/values/Numbers.h"

#include <fmt/format.h>

#include <array>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string_view>

namespace orrery {

namespace {

/// "1 row", "25,000 rows"
std::string counted(std::uint64_t count, std::string_view word) {
    return fmt::format("{} {}{}", groupedThousands(count), word, count == 1 ? "" : "s");
}

/// "less than 0.1 s", "0.3 s", "42 s", "5 min 7 s", "3 h 20 min"
std::string durationText(double seconds) {
    if (seconds < 0.05) return "less than 0.1 s";
    if (seconds < 9.95) return fmt::format("{:.1f} s", seconds);
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    if (whole < 60) return fmt::format("{} s", whole);
    if (whole < 3600) return fmt::format("{} min {} s", whole / 60, whole % 60);
    return fmt::format("{} h {} min", whole / 3600, whole % 3600 / 60);
}

std::string resultsText(const RunOutcome& outcome, const Date& now) {
    const std::string responses = counted(outcome.responses, "response");
    const std::string rest = fmt::format("{}, {}", responses, durationText(outcome.seconds));
    const std::string some = fmt::format("{} of {}", groupedThousands(outcome.rowsFound), counted(outcome.rows, "row"));
    if (!outcome.ranAt.empty()) {
        return fmt::format("Run of {}: {}, {}", outcome.ranAt,
                           outcome.isPartial() ? "incomplete, " + some : counted(outcome.rows, "row"), responses);
    }
    if (outcome.staleSince) {
        return fmt::format("Results of an earlier run ({} old{})", ageText(*outcome.staleSince, now),
                           outcome.isPartial() ? ", " + some : "");
    }
    return outcome.isPartial() ? fmt::format("Incomplete: {}, {}", some, rest)
                               : fmt::format("Done: {}, {}", counted(outcome.rows, "row"), rest);
}

/// The system's name of a signal, in no language but its own: "segmentation fault".
std::string signalName(int number) {
    const char* const description = sigdescr_np(number);
    std::string name = description == nullptr ? "unknown" : description;
    const auto isUpper = [&](std::size_t i) { return std::isupper(static_cast<unsigned char>(name[i])) != 0; };
    if (name.size() > 1 && isUpper(0) && !isUpper(1)) name[0] = static_cast<char>(std::tolower(name[0]));
    return name;
}

} // namespace

std::string outcomeText(const RunOutcome& outcome, const Date& now) {
    const std::string engine = engineFailure(outcome.end);
    switch (outcome.kind) {
    case RunOutcome::Kind::Results:
        return resultsText(outcome, now) + (engine.empty() ? "" : "; " + engine);
    case RunOutcome::Kind::Failed:
        return "Failed: " + (engine.empty() ? outcome.failure : engine);
    case RunOutcome::Kind::Aborted:
        return "Aborted";
    case RunOutcome::Kind::None:
        break;
    }
    return {};
}

std::string engineEndInWords(const ProcessEnd& end) {
    switch (end.kind) {
    case ProcessEnd::Kind::NotStarted:
        return "the engine could not be started";
    case ProcessEnd::Kind::Exited:
        return fmt::format("the engine ended with exit code {}", end.number);
    case ProcessEnd::Kind::Signalled:
        return fmt::format("the engine was ended by signal {} ({})", end.number, signalName(end.number));
    case ProcessEnd::Kind::Unknown:
        break;
    }
    return "it is not known how the engine ended";
}

std::string engineFailure(const ProcessEnd& end) {
    const bool isGood = end.kind == ProcessEnd::Kind::Unknown || end == ProcessEnd{ProcessEnd::Kind::Exited, 0};
    return isGood ? "" : engineEndInWords(end);
}

std::string ageText(const Date& date, const Date& now) {
    struct Unit {
        std::int64_t seconds;
        const char* name;
    };
    static constexpr std::array units{Unit{86400, "day"}, Unit{3600, "hour"}, Unit{60, "minute"}, Unit{1, "second"}};
    const std::int64_t whole = now.seconds - date.seconds - (now.nanoseconds < date.nanoseconds ? 1 : 0);
    for (const Unit& unit : units) {
        if (const std::int64_t count = whole / unit.seconds; count > 0) {
            return fmt::format("{} {}{}", count, unit.name, count == 1 ? "" : "s");
        }
    }
    return "less than a second";
}

} // namespace orrery
