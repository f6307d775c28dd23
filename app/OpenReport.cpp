#include "app/OpenReport.h"

#include <fmt/format.h>

#include <algorithm>

namespace orrery {
namespace {

constexpr std::size_t mostReasons = 8; // what a message still shows on a small screen

std::string reasonLines(const std::vector<OpenReport::Failure>& failures) {
    std::string lines;
    for (std::size_t i = 0; i < std::min(failures.size(), mostReasons); ++i)
        lines += failures[i].reason + "\n";
    if (failures.size() > mostReasons) lines += fmt::format("And {} more.\n", failures.size() - mostReasons);
    return lines;
}

std::string messageOf(const OpenReport& report) {
    if (report.failures.size() == 1) return "“" + report.failures.front().name + "” could not be opened.";
    if (!report.failures.empty()) return fmt::format("{} files could not be opened.", report.failures.size());
    return report.leftOut == 1 ? "One file was not opened." : fmt::format("{} files were not opened.", report.leftOut);
}

} // namespace

std::optional<AlertText> OpenReport::alert() const {
    if (failures.empty() && leftOut == 0) return std::nullopt;
    AlertText text{messageOf(*this), reasonLines(failures)};
    text.matter = "files to open";
    if (leftOut > 0) {
        text.informative +=
            fmt::format("At most {} windows are opened at once. {} left out: open them with File > Open\u2026",
                        mostWindows, leftOut == 1 ? "One file was" : fmt::format("{} files were", leftOut));
    } else {
        text.informative.pop_back();
    }
    return text;
}

} // namespace orrery
