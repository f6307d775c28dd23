#include "model/ModelTree.h"

#include "platform/Log.h"
#include "platform/OrreryError.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_map>
#include <utility>

namespace orrery {

namespace {

constexpr std::string_view levelClass = "KSLEVEL";
constexpr std::string_view inputClass = "KSINPUT";
constexpr std::string_view outputClass = "KSOUTPUT";
constexpr std::string_view templateClass = "KSTEMPLATE"; // no part of the tree

constexpr std::array<std::string_view, 12> classNames = {
    "KSEXPRESSION", "KSTVDD",   "KS2DTVDD", "KSHTL",           levelClass,  inputClass,
    outputClass,    "KSLOOKUP", "KSFILE",   "KSINPUTSPLITTER", "KSWEATHER", "KSRANDOM",
};

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
constexpr std::size_t loggedRepeats = 10;

ModelNodeKind kindOfClass(std::string_view className) {
    if (className == inputClass || className == outputClass) return ModelNodeKind::Port;
    return className == levelClass ? ModelNodeKind::Level : ModelNodeKind::Part;
}

/// The node's record: class and identifier, then one entry per model attribute, the last of a name. Takes the texts.
StringMap takeNodeRecord(ModelRecord& record) {
    std::vector<std::pair<std::string_view, std::string*>> items;
    items.reserve(record.attributes.size() + 2);
    if (record.className) items.emplace_back("class", &*record.className);
    if (record.identifier) items.emplace_back("id", &*record.identifier);
    for (StringMap& attribute : record.attributes) {
        std::string* value = attribute.find("value");
        if (attribute.contains("name") && value != nullptr) items.emplace_back(attribute.text("name"), value);
    }
    std::unordered_map<std::string_view, std::string*> last; // an object may have very many attributes
    for (const auto& [name, value] : items) {
        last[name] = value;
    }
    StringMap result;
    result.reserve(last.size() + 1);
    for (const auto& [name, first] : items) {
        std::string*& value = last.find(name)->second;
        if (value != nullptr) result.append(std::string(name), std::move(*value));
        value = nullptr;
    }
    return result;
}

} // namespace

/// Builds one tree: a node per object first, then the attachments, which become links only at the end, when it is known
/// which one of a node's several owners is the last.
class ModelTreeBuilder {
public:
    ModelTreeBuilder(std::vector<ModelRecord> records, const std::string& fileName)
        : m_records(std::move(records)), m_fileName(fileName) {}

    ModelTree build() {
        for (std::size_t index = 0; index < m_records.size(); ++index) {
            if (m_records[index].className != templateClass) addObject(index);
        }
        logRepeats();
        if (m_rootIdentifier.empty()) failWithoutRoot();
        for (std::size_t node = 0; node < m_recordOfNode.size(); ++node) {
            if (m_tree.m_nodes[node].kind != ModelNodeKind::Port) collectAttachments(node);
        }
        link();
        checkAncestors();
        return std::move(m_tree);
    }

private:
    struct Attachment {
        std::size_t owner;
        std::size_t child;
    };
    using Targets = std::vector<std::string>;

    void addObject(std::size_t recordIndex) {
        ModelRecord& record = m_records[recordIndex];
        checkClass(record);
        const bool isLevel = record.className == levelClass;

        ModelNode& node = m_tree.m_nodes.emplace_back();
        node.record = takeNodeRecord(record);
        record.attributes = {};
        node.record.remove("attributes");
        node.record.remove("relationships");
        if (!node.record.contains("name")) node.record.append("name", std::string(node.record.text("class")));
        node.kind = kindOfClass(node.record.text("class"));
        m_recordOfNode.push_back(recordIndex);
        addToIndex(m_tree.m_nodes.size() - 1);

        if (isLevel && record.targets("parent") == nullptr) {
            m_rootIdentifier = node.record.text("id");
            m_tree.m_root = &node;
        }
    }

    void checkClass(const ModelRecord& record) const {
        const std::string className = record.className.value_or("");
        if (std::find(classNames.begin(), classNames.end(), className) != classNames.end()) return;
        throw OrreryError(fmt::format("Couldn't find class for {} (object \"{}\"{}).", quotedForMessage(className),
                                      quotedForMessage(record.identifier.value_or("")),
                                      record.className ? "" : ", which has no type"),
                          Place{m_fileName, record.line},
                          fmt::format("The type must be one of {} or {}.", fmt::join(classNames, ", "), templateClass));
    }

    void addToIndex(std::size_t node) {
        const std::string* identifier = m_tree.m_nodes[node].record.find("id");
        if (identifier == nullptr) return; // nothing can refer to it
        const auto [found, isNew] = m_nodeOfIdentifier.try_emplace(*identifier, node);
        if (isNew) return;
        if (++m_repeats <= loggedRepeats) {
            logLine(fmt::format("{}: identifier \"{}\" is used again; it stood at line {} and names this object from "
                                "now on.",
                                placeOf(node).text(), quotedForMessage(*identifier), lineOf(found->second)));
        }
        found->second = node;
    }

    void logRepeats() const {
        if (m_repeats <= loggedRepeats) return;
        logLine(fmt::format("{}: {} more identifiers are used again.", m_fileName, m_repeats - loggedRepeats));
    }

    [[noreturn]] void failWithoutRoot() const {
        const char* reason = "no level (KSLEVEL) is without a parent";
        if (m_tree.m_root != nullptr) reason = "the level without a parent has no identifier";
        if (m_tree.m_nodes.empty()) reason = "the file holds no model objects directly under <database>";
        throw OrreryError(fmt::format("No root: {}.", reason), Place{m_fileName},
                          "Check that this is a model file, open it in the modelling tool and save it again.");
    }

    void collectAttachments(std::size_t node) {
        const ModelRecord& record = m_records[m_recordOfNode[node]];
        if (const Targets* parents = record.targets("parent"); parents != nullptr && !parents->empty()) {
            if (parents->front() == m_rootIdentifier) m_tree.m_topLevel.push_back(&m_tree.m_nodes[node]);
        }
        if (m_tree.m_nodes[node].kind == ModelNodeKind::Level) attachAll(node, resolve(node, "children"));
        const std::size_t inputs = addPortGroup(node, "inputs");
        const std::size_t outputs = addPortGroup(node, "outputs");
        attachAll(inputs, resolve(node, "inputs"));
        attachAll(outputs, sortedByVarid(resolve(node, "outputs")));
    }

    /// The nodes that the relationship names, in its order.
    std::vector<std::size_t> resolve(std::size_t node, std::string_view relationship) const {
        std::vector<std::size_t> nodes;
        if (const Targets* targets = m_records[m_recordOfNode[node]].targets(relationship)) {
            nodes.reserve(targets->size());
            for (const std::string& identifier : *targets) {
                const auto found = m_nodeOfIdentifier.find(identifier);
                if (found == m_nodeOfIdentifier.end()) failWithoutChild(node, relationship, identifier);
                nodes.push_back(found->second);
            }
        }
        return nodes;
    }

    [[noreturn]] void failWithoutChild(std::size_t node, std::string_view relationship,
                                       const std::string& identifier) const {
        const bool isTemplate = std::any_of(m_records.begin(), m_records.end(), [&](const ModelRecord& record) {
            return record.className == templateClass && record.identifier == identifier;
        });
        const char* reason = "no object has that identifier";
        if (identifier.empty()) reason = "that is an empty reference (no text, or two blanks in a row)";
        if (isTemplate) reason = "that is a template, which is no part of a model";
        throw OrreryError(fmt::format("Failure to find child node: {} names \"{}\" among its \"{}\", but {}.",
                                      describe(node), quotedForMessage(identifier), relationship, reason),
                          placeOf(node), "Remove the reference, or open the model in the modelling tool and save it.");
    }

    std::size_t addPortGroup(std::size_t owner, const char* name) {
        ModelNode& group = m_tree.m_nodes.emplace_back();
        group.kind = ModelNodeKind::PortGroup;
        group.record.append("name", name);
        m_attachments.push_back({owner, m_tree.m_nodes.size() - 1});
        return m_tree.m_nodes.size() - 1;
    }

    void attachAll(std::size_t owner, const std::vector<std::size_t>& children) {
        for (const std::size_t child : children) {
            m_attachments.push_back({owner, child});
        }
    }

    std::vector<std::size_t> sortedByVarid(std::vector<std::size_t> nodes) const {
        const auto varid = [this](std::size_t node) { return m_tree.m_nodes[node].record.find("varid"); };
        std::sort(nodes.begin(), nodes.end(), [&](std::size_t left, std::size_t right) {
            const std::string* first = varid(left);
            const std::string* second = varid(right);
            if (first == nullptr || second == nullptr) {
                return (first == nullptr) == (second == nullptr) ? left < right : first == nullptr;
            }
            const int order = first->compare(*second);
            return order == 0 ? left < right : order < 0;
        });
        return nodes;
    }

    /// Turns the last attachment of each node into a parent link, and appends it to its parent's children in its turn.
    void link() {
        m_parents.assign(m_tree.m_nodes.size(), none);
        for (auto each = m_attachments.rbegin(); each != m_attachments.rend(); ++each) {
            std::size_t& parent = m_parents[each->child];
            if (parent == none) {
                parent = each->owner;
            } else {
                each->owner = none;
            }
        }
        for (const auto& [owner, child] : m_attachments) {
            if (owner == none) continue;
            m_tree.m_nodes[child].parent = &m_tree.m_nodes[owner];
            m_tree.m_nodes[owner].children.push_back(&m_tree.m_nodes[child]);
        }
    }

    /// Walks up from every node until it meets one whose depth is known, so each node is passed once.
    void checkAncestors() const {
        constexpr std::size_t onTheWay = none;
        std::vector<std::size_t> depths(m_parents.size(), 0);
        std::vector<std::size_t> way;
        for (std::size_t start = 0; start < m_parents.size(); ++start) {
            std::size_t node = start;
            for (; node != none && depths[node] == 0; node = m_parents[node]) {
                depths[node] = onTheWay;
                way.push_back(node);
            }
            if (node != none && depths[node] == onTheWay) failAsOwnAncestor(node);
            std::size_t depth = node == none ? 0 : depths[node];
            for (; !way.empty(); way.pop_back()) {
                depths[way.back()] = ++depth;
                checkDepth(way.back(), depth);
            }
        }
    }

    void checkDepth(std::size_t node, std::size_t depth) const {
        if (node >= m_recordOfNode.size() || m_tree.m_nodes[node].kind == ModelNodeKind::Port) return;
        if (depth <= modelDepthLimit) return;
        throw OrreryError(fmt::format("The {} lies more than {} levels deep.", describe(node), modelDepthLimit),
                          placeOf(node), "Nest the model's levels less deeply.");
    }

    [[noreturn]] void failAsOwnAncestor(std::size_t node) const {
        const std::size_t object = node < m_recordOfNode.size() ? node : m_parents[node]; // a group belongs to one
        throw OrreryError(fmt::format("The {} would be its own ancestor.", describe(object)), placeOf(object),
                          "Remove it from the lists of the parts and levels inside it.");
    }

    /// level "Field" (object "z1")
    [[nodiscard]] std::string describe(std::size_t node) const {
        const ModelNode& object = m_tree.m_nodes[node];
        const char* kind = object.kind == ModelNodeKind::Level  ? "level"
                           : object.kind == ModelNodeKind::Port ? "port"
                                                                : "part";
        return fmt::format("{} \"{}\" (object \"{}\")", kind, quotedForMessage(std::string(object.name())),
                           quotedForMessage(std::string(object.record.text("id"))));
    }

    [[nodiscard]] std::size_t lineOf(std::size_t node) const { return m_records[m_recordOfNode[node]].line; }
    [[nodiscard]] Place placeOf(std::size_t node) const { return Place{m_fileName, lineOf(node)}; }

    std::vector<ModelRecord> m_records; // their attributes move into the nodes
    const std::string& m_fileName;
    ModelTree m_tree;                        // nodes of objects first, in record order, then the port groups
    std::vector<std::size_t> m_recordOfNode; // of the objects' nodes
    std::unordered_map<std::string_view, std::size_t> m_nodeOfIdentifier; // keys are texts of the nodes' records
    std::string m_rootIdentifier;
    std::vector<Attachment> m_attachments; // in the order in which they were made
    std::vector<std::size_t> m_parents;    // per node; none for what was never attached
    std::size_t m_repeats = 0;             // identifiers used again
};

ModelTree nodesFromDictionaries(std::vector<ModelRecord> records, const std::string& fileName) {
    return ModelTreeBuilder(std::move(records), fileName).build();
}

ModelTree nodesFromDictionaries(std::optional<std::vector<ModelRecord>> records, const std::string& fileName) {
    return records ? nodesFromDictionaries(std::move(*records), fileName) : ModelTree();
}

} // namespace orrery
