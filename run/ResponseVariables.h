#pragma once

#include "model/ModelTree.h"
#include "run/IndependentVariable.h"
#include "run/ResponseVariable.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// Appends a response variable for every recorded output port (attribute `recordp` reads as true) below the node.
/// Port groups are recognised by their kind, so a part may be named "inputs" or "outputs".
void collectRecorders(const ModelNode& node, std::vector<ResponseVariable>& recorders);

/// The recorded output ports of a model: those below the top-level nodes, in tree order.
[[nodiscard]] std::vector<ResponseVariable> recordersOf(const ModelTree& tree);

/// How many those are.
[[nodiscard]] std::size_t recorderCount(const ModelTree& tree);

/// The last part of a name or path, by which columns and ports are paired.
[[nodiscard]] std::string_view leafOf(std::string_view name);

/// Lenient text-to-boolean: after white space, an optional sign and zeros, the text begins with Y, y, T, t or 1 … 9.
[[nodiscard]] bool booleanValue(std::string_view text);

/// The labels of a result table's header line: at most 9,999 bytes of it are read, the last of them is dropped (the
/// line feed), the rest is decoded as Mac OS Roman and split at every tab. An empty table has no labels.
[[nodiscard]] std::vector<std::string> headerLabels(std::string_view tableBytes);
inline constexpr std::size_t headerLimit = 9999;

struct ResponseVariables {
    std::vector<std::string> labels;         // the header's labels for the recorders, matched or not
    std::vector<ResponseVariable> variables; // in the labels' order, coloured evenly over the hue circle
    std::vector<std::string> notes;          // what the user should know of the header, one line each
    std::vector<std::string> units;          // per variable as the model says it, or none at all

    [[nodiscard]] std::string unitOf(std::size_t variable) const {
        return variable < units.size() ? units[variable] : "";
    }
};

/// Colours them evenly over the hue circle, from red.
void spreadColors(std::vector<ResponseVariable>& variables);

/// Pairs the recorders with the header's labels after the `sweepVariableCount` + 1 leading ones, by the last part of
/// their name (the later of two recorders of one name stands for all labels of that name). A label without a recorder
/// is dropped.
/// @param fileName for messages only
/// @throws OrreryError with both numbers when a header that is not empty has too few labels
[[nodiscard]] ResponseVariables matchResponseVariables(const std::vector<ResponseVariable>& recorders,
                                                       const std::vector<std::string>& headerLabels,
                                                       std::size_t sweepVariableCount, const std::string& fileName);

/// Reads the header of the table at the path, matches, and notes what is odd about it.
/// @throws OrreryError when the table cannot be opened (see ResultTableMissing), is not text (UTF-16, binary), or its
///         header has too few labels
[[nodiscard]] ResponseVariables constructDependentVariables(const ModelTree& tree,
                                                            std::span<const IndependentVariable> sweepVariables,
                                                            const std::string& tablePath);

} // namespace orrery
