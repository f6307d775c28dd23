#pragma once

#include "model/IdentifierIndex.h"
#include "model/ModelTree.h"
#include "platform/values/OrreryError.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orrery {

/// The record of a node in the making: the texts in the order in which their keys were first set, the last text of
/// each.
class NodeRecordDraft {
public:
    void clear();
    void set(std::string_view key, std::string_view text);
    /// The record, of exactly its size. The draft's items are moved out.
    [[nodiscard]] StringMap take();

private:
    [[nodiscard]] std::size_t placeOf(std::string_view key);

    std::vector<StringMap::Item> m_items; // of which the first m_count count
    std::size_t m_count = 0;
    std::map<std::string, std::size_t, std::less<>> m_places; // of the keys, when they are many
};

/// Builds one tree: a node per object first, as the objects come, then the attachments, which become links only at the
/// end, when it is known which one of a node's several owners is the last.
class ModelTreeBuilder {
public:
    explicit ModelTreeBuilder(const std::string& fileName) : m_fileName(fileName) {}
    ModelTreeBuilder(const ModelTreeBuilder&) = delete;
    ModelTreeBuilder& operator=(const ModelTreeBuilder&) = delete;
    ~ModelTreeBuilder() = default;

    void startObject(std::optional<std::string_view> className, std::optional<std::string_view> identifier,
                     std::size_t line);
    void attribute(std::string_view name, std::string_view text) { m_draft.set(name, text); }
    /// `targets` are identifiers separated by single blanks.
    void relationship(std::string_view name, std::optional<std::string_view> targets);
    /// @throws OrreryError for an unknown class
    void endObject();

    /// Legal once. @throws OrreryError as nodesFromDictionaries
    [[nodiscard]] ModelTree build();

private:
    struct Attachment {
        std::size_t owner;
        std::size_t child;
    };
    /// The relationships of an object that make the tree: their targets, where they have any.
    struct Relationships {
        std::size_t node = 0;
        std::optional<std::string> parent, children, inputs, outputs;
    };
    using Nodes = std::vector<std::size_t>;
    struct IdentifierOf {
        const ModelTree* tree;
        std::string_view operator()(std::uint32_t node) const { return tree->m_nodes[node].record.text("id"); }
    };

    void checkClass() const;
    void addObject();
    void addToIndex(std::size_t node);
    void logRepeats() const;
    void collectAttachments(const Relationships& object);
    [[nodiscard]] Nodes resolve(std::size_t node, std::string_view relationship,
                                const std::optional<std::string>& targets) const;
    std::size_t addPortGroup(std::size_t owner, const char* name);
    void attachAll(std::size_t owner, const Nodes& children);
    [[nodiscard]] Nodes sortedByVarid(Nodes nodes) const;
    void link();
    void checkAncestors() const;
    void checkDepth(std::size_t node, std::size_t depth) const;
    [[noreturn]] void failWithoutRoot() const;
    [[noreturn]] void failWithoutChild(std::size_t node, std::string_view relationship,
                                       std::string_view identifier) const;
    [[noreturn]] void failAsOwnAncestor(std::size_t node) const;
    [[nodiscard]] std::string describe(std::size_t node) const;
    [[nodiscard]] Place placeOf(std::size_t node) const { return Place{m_fileName, m_lines[node]}; }

    const std::string& m_fileName;

    // The present object
    std::optional<std::string> m_className;
    std::optional<std::string> m_identifier;
    std::size_t m_line = 0;
    NodeRecordDraft m_draft;
    Relationships m_relationships;

    ModelTree m_tree;                     // nodes of objects first, in their order, then the port groups
    std::vector<std::size_t> m_lines;     // of the objects' nodes
    std::vector<Relationships> m_owners;  // of the objects that are not ports, in their order
    std::vector<std::string> m_templates; // their identifiers
    IdentifierIndex<IdentifierOf> m_nodeOfIdentifier{{&m_tree}};
    std::string m_rootIdentifier;
    std::vector<Attachment> m_attachments; // in the order in which they were made
    Nodes m_parents;                       // per node; none for what was never attached
    std::vector<std::string> m_repeatNotes;
    std::size_t m_repeats = 0; // identifiers used again
};

} // namespace orrery
