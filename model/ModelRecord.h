#pragma once

#include "platform/values/StringMap.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// A named reference of a model object to others, by identifier.
struct ModelRelationship {
    std::optional<std::string> type;                 // kept, not interpreted
    std::optional<std::vector<std::string>> targets; // "idrefs" split at every single blank; absent without "idrefs"
};

/// One stored object of a model file, uninterpreted.
struct ModelRecord {
    std::optional<std::string> className;  // the object's "type": an upper-case type text such as "KSLEVEL"
    std::optional<std::string> identifier; // the object's "id"
    std::vector<StringMap> attributes;     // one per "attribute" element: its XML attributes, then "value" = its text
    std::map<std::string, ModelRelationship, std::less<>> relationships; // by name; a later one replaces an earlier
    std::size_t line = 0; // where the object starts in its file, for messages

    /// The targets of the relationship; nullptr when it or its targets are absent.
    [[nodiscard]] const std::vector<std::string>* targets(std::string_view relationship) const;
};

/// Reads the objects that stand directly under the top "database" element, in document order. Streams the file: time
/// and memory are linear in its size.
/// @return std::nullopt for an empty path (silently) or when the file cannot be opened or is not well-formed (after
///         the log line "Error opening XML document %@" with the path, and a second one with the reason)
[[nodiscard]] std::optional<std::vector<ModelRecord>> dictionariesFromModelFile(const std::string& path);

/// The same for callers that can show the reason. @throws OrreryError instead of logging
[[nodiscard]] std::vector<ModelRecord> readModelFile(const std::string& path);

} // namespace orrery
