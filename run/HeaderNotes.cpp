#include "run/HeaderNotes.h"

#include "platform/values/Quoted.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>

namespace orrery {

namespace {

using Names = std::vector<std::string>;
using PortsByName = std::map<std::string_view, Names>; // full names, in tree order

Names sweepNames(std::span<const IndependentVariable> variables) {
    Names names;
    for (const IndependentVariable& variable : variables) {
        names.emplace_back(leafOf(variable.name()));
    }
    return names;
}

/// Whether `names` can be had from `all` by leaving some out.
bool isInOrderOf(const Names& names, const Names& all) {
    auto at = all.begin();
    for (const std::string& name : names) {
        at = std::find(at, all.end(), name);
        if (at == all.end()) return false;
        ++at;
    }
    return true;
}

void noteOtherVariables(const Names& labels, const HeaderExpectation& expected, Names& notes) {
    const Names wanted = sweepNames(expected.variables);
    Names leading;
    for (std::size_t i = 0; i < std::min(labels.size(), wanted.size() + 1); ++i) {
        leading.emplace_back(leafOf(labels[i]));
    }
    if (std::ranges::equal(wanted, std::span(leading).subspan(std::min<std::size_t>(leading.size(), 1)))) return;
    Names known;
    std::ranges::copy_if(leading, std::back_inserter(known), [&](const std::string& name) {
        return std::ranges::find(wanted, name) != wanted.end() || expected.isInputName(name);
    });
    if (isInOrderOf(known, wanted)) return;
    notes.push_back(fmt::format("The result table's header names the sweep variables {}, but the setup's are {}: the "
                                "table may be that of another setup.",
                                listed(known), listed(wanted)));
}

/// Labels that are dropped move the responses after them up: the first that moves shows by example what that means.
void noteDroppedLabels(const ResponseVariables& matched, const PortsByName& ports, Names& notes) {
    Names dropped;
    std::string example;
    for (std::size_t column = 0; column < matched.labels.size(); ++column) {
        const std::string& label = matched.labels[column];
        if (!ports.contains(label)) {
            dropped.push_back(label);
        } else if (!dropped.empty() && example.empty()) {
            example = fmt::format(": {} may show the numbers of {}", quoted(label),
                                  quoted(matched.labels[column - dropped.size()]));
        }
    }
    if (dropped.empty()) return;
    const bool one = dropped.size() == 1;
    notes.push_back(fmt::format("{} in the result table's header that {} no recorded port of the model: {}. Columns "
                                "are paired by position{}.",
                                one ? "There is a label" : fmt::format("There are {} labels", dropped.size()),
                                one ? "matches" : "match", listed(dropped), example));
}

void noteSurplusLabels(const Names& labels, std::size_t needed, Names& notes) {
    const auto end = std::find_if(labels.rbegin(), labels.rend(), [](const auto& label) { return !label.empty(); });
    const auto count = static_cast<std::size_t>(labels.rend() - end); // a tab at the line's end makes an empty one
    if (count <= needed) return;
    notes.push_back(fmt::format("The result table's header has {} labels, but the setup and the model's recorded "
                                "outputs have {}; those from {} on were not read.",
                                count, needed, quoted(labels[needed])));
}

void noteSharedRecords(const ResponseVariables& matched, const PortsByName& ports, Names& notes) {
    std::map<std::string_view, std::size_t> columns;
    for (const ResponseVariable& response : matched.variables) {
        ++columns[leafOf(response.name())];
    }
    for (const auto& [name, count] : columns) {
        const Names& sharing = ports.at(name);
        if (sharing.size() > 1) {
            notes.push_back(fmt::format("{} recorded ports are named {}: {}. Every column of that name is shown under "
                                        "{}, with one scale and colour.",
                                        sharing.size(), quoted(name), listed(sharing), quoted(sharing.back())));
        } else if (count > 1) {
            notes.push_back(fmt::format("The result table's header has the label {} {} times; its columns share one "
                                        "scale and colour.",
                                        quoted(name), count));
        }
    }
}

void noteCarriageReturn(const ResponseVariables& matched, Names& notes) {
    if (matched.labels.empty() || !matched.labels.back().ends_with('\r')) return;
    notes.emplace_back("The result table's header ends in a carriage return, which belongs to its last label. Have the "
                       "engine end its lines with a line feed alone.");
}

} // namespace

std::vector<std::string> headerNotes(const std::vector<std::string>& headerLabels, const ResponseVariables& matched,
                                     const HeaderExpectation& expected) {
    Names notes;
    if (headerLabels.empty()) return notes;
    PortsByName ports;
    for (const ResponseVariable& recorder : expected.recorders) {
        ports[leafOf(recorder.name())].push_back(recorder.name());
    }
    noteOtherVariables(headerLabels, expected, notes);
    noteDroppedLabels(matched, ports, notes);
    noteSurplusLabels(headerLabels, expected.variables.size() + 1 + expected.recorders.size(), notes);
    noteSharedRecords(matched, ports, notes);
    noteCarriageReturn(matched, notes);
    return notes;
}

} // namespace orrery
