#include "run/ResponseVariables.h"

#include "model/PortPaths.h"
#include "platform/Files.h"
#include "platform/values/MacRoman.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"
#include "run/HeaderNotes.h"
#include "run/table/ResultTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace orrery {

namespace {

/// The port's node path without its group: Field/Crop/outputs/biomass is Field/Crop/biomass.
std::string responseName(const ModelNode& port) {
    constexpr std::string_view group = "/outputs/";
    std::string name = pathForNode(port);
    for (std::size_t at = name.find(group); at != std::string::npos; at = name.find(group, at + 1)) {
        name.replace(at, group.size(), "/");
    }
    return name;
}

std::vector<std::string> splitAtTabs(const std::string& text) {
    std::vector<std::string> labels;
    std::size_t begin = 0;
    for (std::size_t tab = text.find('\t'); tab != std::string::npos; tab = text.find('\t', begin)) {
        labels.push_back(text.substr(begin, tab - begin));
        begin = tab + 1;
    }
    labels.push_back(text.substr(begin));
    return labels;
}

/// Calls visit(port) for every port below the node in groups of that name, in tree order.
template <class Visit>
void forEachPort(const ModelNode& node, std::string_view group, const Visit& visit) {
    for (const ModelNode* child : node.children) {
        if (child->kind != ModelNodeKind::PortGroup) {
            forEachPort(*child, group, visit);
        } else if (child->name() == group) {
            for (const ModelNode* port : child->children) {
                visit(*port);
            }
        }
    }
}

template <class Visit>
void forEachRecorder(const ModelNode& node, const Visit& visit) {
    forEachPort(node, "outputs", [&visit](const ModelNode& port) {
        if (booleanValue(port.record.text("recordp"))) visit(port);
    });
}

bool hasInputPort(const ModelTree& tree, std::string_view name) {
    bool has = false;
    if (tree.root() != nullptr) {
        forEachPort(*tree.root(), "inputs", [&](const ModelNode& port) { has = has || port.name() == name; });
    }
    return has;
}

std::vector<std::string> unitsOf(const ModelTree& tree, const std::vector<ResponseVariable>& variables) {
    std::map<std::string_view, std::string_view> byIdentifier;
    for (const ModelNode* node : tree.topLevel()) {
        forEachRecorder(
            *node, [&](const ModelNode& port) { byIdentifier[port.record.text("id")] = port.record.text("unit"); });
    }
    std::vector<std::string> units;
    units.reserve(variables.size());
    for (const ResponseVariable& variable : variables) {
        units.emplace_back(byIdentifier[variable.identifier()]);
    }
    return units;
}

bool isControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 && byte != '\t' && byte != '\r';
}

/// UTF-16 has a NUL beside every tab, and binary data are full of bytes that no text has; a stray one in a label is the
/// engine's business.
void requireText(std::string_view header, const std::string& fileName) {
    const std::string_view line = header.substr(0, header.find('\n'));
    const bool marked = line.starts_with("\xFE\xFF") || line.starts_with("\xFF\xFE");
    const auto controls = static_cast<std::size_t>(std::ranges::count_if(line, isControl));
    if (!marked && controls * 8 <= line.size()) return;
    throw OrreryError(fmt::format("This is not a result table: it is UTF-16 or binary data and begins with {}.",
                                  quoted(decodeMacRoman(line.substr(0, 16)))),
                      {fileName, 0, 0}, "Have the engine write plain text, one byte per character.");
}

} // namespace

void spreadColors(std::vector<ResponseVariable>& variables) {
    if (variables.empty()) {
        return;
    }
    const auto hueStep = static_cast<float>(1.0 / static_cast<double>(variables.size()));
    float hue = 0;
    for (ResponseVariable& variable : variables) {
        variable.setValue("color", colorFromHsb(hue, 1.0F, 1.0F, 1.0F));
        hue += hueStep;
    }
}

std::string_view leafOf(std::string_view name) {
    return name.substr(name.rfind('/') + 1); // npos + 1 is 0: the whole name
}

void collectRecorders(const ModelNode& node, std::vector<ResponseVariable>& recorders) {
    forEachRecorder(node, [&recorders](const ModelNode& port) {
        recorders.emplace_back(responseName(port), std::string(port.record.text("id")));
    });
}

std::size_t recorderCount(const ModelTree& tree) {
    std::size_t count = 0;
    for (const ModelNode* node : tree.topLevel()) {
        forEachRecorder(*node, [&count](const ModelNode&) { ++count; });
    }
    return count;
}

std::vector<ResponseVariable> recordersOf(const ModelTree& tree) {
    std::vector<ResponseVariable> recorders;
    for (const ModelNode* node : tree.topLevel()) {
        collectRecorders(*node, recorders);
    }
    return recorders;
}

bool booleanValue(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.starts_with('+') || text.starts_with('-')) {
        text.remove_prefix(1);
    }
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

std::vector<std::string> headerLabels(std::string_view tableBytes) {
    std::string_view line = tableBytes.substr(0, headerLimit);
    line = line.substr(0, std::min(line.find('\n'), line.size() - 1) + 1);
    if (line.empty()) {
        return {};
    }
    line.remove_suffix(1);
    return splitAtTabs(decodeMacRoman(line));
}

ResponseVariables matchResponseVariables(const std::vector<ResponseVariable>& recorders,
                                         const std::vector<std::string>& headerLabels, std::size_t sweepVariableCount,
                                         const std::string& fileName) {
    const std::size_t leading = sweepVariableCount + 1;
    const std::size_t needed = leading + recorders.size();
    if (headerLabels.empty()) {
        return {};
    }
    if (headerLabels.size() < needed) {
        throw OrreryError(fmt::format("The header of the result table has {} labels, but the setup and the model's {} "
                                      "recorded outputs need {}; its first label is {}.",
                                      headerLabels.size(), recorders.size(), needed, quoted(headerLabels.front())),
                          {fileName, 1, 0}, "Run the simulation again with this model.");
    }
    ResponseVariables result;
    const auto first = headerLabels.begin() + static_cast<std::ptrdiff_t>(leading);
    result.labels.assign(first, first + static_cast<std::ptrdiff_t>(recorders.size()));

    std::map<std::string_view, const ResponseVariable*> byLeaf;
    for (const ResponseVariable& recorder : recorders) {
        byLeaf[leafOf(recorder.name())] = &recorder;
    }
    for (const std::string& label : result.labels) {
        if (const auto found = byLeaf.find(label); found != byLeaf.end()) {
            result.variables.push_back(*found->second);
        }
    }
    spreadColors(result.variables);
    return result;
}

ResponseVariables constructDependentVariables(const ModelTree& tree,
                                              std::span<const IndependentVariable> sweepVariables,
                                              const std::string& tablePath) {
    const auto recorders = recordersOf(tree);
    const ReadableFile file = openResultTable(tablePath);
    std::string header(headerLimit, '\0');
    header.resize(file.readAt(header.data(), header.size(), 0));
    requireText(header, tablePath);
    const std::vector<std::string> labels = headerLabels(header);
    ResponseVariables result = matchResponseVariables(recorders, labels, sweepVariables.size(), tablePath);
    result.units = unitsOf(tree, result.variables);
    const auto isInputName = [&tree](std::string_view name) { return hasInputPort(tree, name); };
    result.notes = headerNotes(labels, result, {sweepVariables, recorders, isInputName});
    return result;
}

} // namespace orrery
