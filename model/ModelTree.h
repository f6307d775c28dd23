#pragma once

#include "model/ModelClass.h"
#include "model/ModelRecord.h"
#include "platform/values/StringMap.h"
#include "platform/xml/XmlDocument.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// A node of the model tree. Owned by its tree.
struct ModelNode {
    ModelNodeKind kind = ModelNodeKind::Part;
    StringMap record;                 // "class", "id", "name" and the model attributes, all text
    std::vector<ModelNode*> children; // in display order
    ModelNode* parent = nullptr;      // none for the root level and for what was never attached

    [[nodiscard]] std::string_view name() const { return record.text("name"); }
};

/// The model as levels, parts and ports. Move-only; pointers to nodes stay valid when it is moved.
class ModelTree {
public:
    ModelTree() = default;
    ModelTree(ModelTree&&) = default;
    ModelTree& operator=(ModelTree&&) = default;
    ModelTree(const ModelTree&) = delete;
    ModelTree& operator=(const ModelTree&) = delete;
    ~ModelTree() = default;

    /// The direct children of the root level, in the order of their records: what an outline shows.
    [[nodiscard]] const std::vector<ModelNode*>& topLevel() const { return m_topLevel; }
    [[nodiscard]] const ModelNode* root() const { return m_root; } // nullptr in an empty tree
    [[nodiscard]] bool empty() const { return m_nodes.empty(); }
    [[nodiscard]] std::size_t nodeCount() const { return m_nodes.size(); } // with those that are attached nowhere

private:
    friend class ModelTreeBuilder;
    std::deque<ModelNode> m_nodes;
    std::vector<ModelNode*> m_topLevel;
    ModelNode* m_root = nullptr;
};

/// Deepest nesting of levels in a model.
inline constexpr std::size_t modelDepthLimit = 1000;

/// Builds the tree from the records.
///
/// Objects of type KSTEMPLATE are left out. The last level without a parent is the root. Outputs are sorted by the
/// text of their "varid" (absent first), equal ones in record order. A node listed under two owners belongs to the
/// last. An identifier used twice names the later object, and a log line says so.
/// @param fileName for messages only
/// @throws OrreryError whose problem begins with "Couldn't find class for …", "No root" or "Failure to find child
///         node" (the identifier follows), or says that a node would be its own ancestor or lies too deep
[[nodiscard]] ModelTree nodesFromDictionaries(std::vector<ModelRecord> records, const std::string& fileName = {});

/// The same tree straight from the model file: nodesFromDictionaries(readModelFile(path), path) without the records,
/// which double the time and the memory. @throws ReadingCancelled, OrreryError as both
[[nodiscard]] ModelTree readModelTree(const std::string& path, const ReadProgress& progress = {});

/// A model as an import leaves it.
struct ImportedModel {
    ModelTree tree;    // empty when the file cannot be read, and for an empty path
    std::string fault; // why the file cannot be read; empty when it could
};

/// The same where a file that cannot be read is logged and gives an empty tree, as dictionariesFromModelFile and
/// nodesFromDictionaries do together. @throws ReadingCancelled, OrreryError as nodesFromDictionaries
[[nodiscard]] ImportedModel importModel(const std::string& path, const ReadProgress& progress = {});

/// std::nullopt in, an empty tree out.
[[nodiscard]] ModelTree nodesFromDictionaries(std::optional<std::vector<ModelRecord>> records,
                                              const std::string& fileName = {});

} // namespace orrery
