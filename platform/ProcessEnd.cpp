#include "platform/ProcessEnd.h"

#include <fmt/format.h>

#include <cctype>
#include <cstring>

namespace orrery {
namespace {

/// The system's name of a signal, in no language but its own: "segmentation fault".
std::string signalName(int number) {
    const char* const description = sigdescr_np(number);
    std::string name = description == nullptr ? "unknown" : description;
    const auto isUpper = [&](std::size_t i) { return std::isupper(static_cast<unsigned char>(name[i])) != 0; };
    if (name.size() > 1 && isUpper(0) && !isUpper(1)) name[0] = static_cast<char>(std::tolower(name[0]));
    return name;
}

} // namespace

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

} // namespace orrery
