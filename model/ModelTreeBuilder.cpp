#include "model/ModelTreeBuilder.h"

#include "model/ModelObjects.h"
#include "platform/Log.h"
#include "platform/values/OrreryError.h"
#include "platform/values/Quoted.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace orrery {

namespace {

constexpr std::string_view templateClass = "KSTEMPLATE"; // not part of the tree

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
constexpr std::size_t loggedRepeats = 10;

ModelNodeKind kindOfClass(std::string_view className) {
    const ModelClass* found = findModelClass(className);
    return found == nullptr ? ModelNodeKind::Part : found->kind;
}

constexpr std::size_t manyKeys = 32; // that many are found faster by a tree than one by one

std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::string knownClassNames() {
    std::string names;
    for (const ModelClass& known : modelClasses) {
        names += fmt::format("{}{}", names.empty() ? "" : ", ", known.name);
    }
    return names;
}

} // namespace

// ---- Records

void NodeRecordDraft::clear() {
    m_count = 0;
    m_places.clear();
}

void NodeRecordDraft::set(std::string_view key, std::string_view text) {
    const std::size_t place = placeOf(key);
    if (place < m_count) {
        m_items[place].second = text;
        return;
    }
    if (m_count == m_items.size()) m_items.emplace_back();
    m_items[m_count].first = key;
    m_items[m_count].second = text;
    ++m_count;
}

/// Where the key stands, or the count where it is new.
std::size_t NodeRecordDraft::placeOf(std::string_view key) {
    if (m_count < manyKeys) {
        const auto end = m_items.begin() + static_cast<std::ptrdiff_t>(m_count);
        return static_cast<std::size_t>(
            std::find_if(m_items.begin(), end, [key](const auto& item) { return item.first == key; }) -
            m_items.begin());
    }
    for (std::size_t place = m_places.size(); place < m_count; ++place) {
        m_places.emplace(m_items[place].first, place);
    }
    const auto found = m_places.find(key);
    return found == m_places.end() ? m_count : found->second;
}

StringMap NodeRecordDraft::take() {
    StringMap record;
    record.reserve(m_count + 1); // a name may be added
    for (std::size_t place = 0; place < m_count; ++place) {
        record.append(std::move(m_items[place].first), std::move(m_items[place].second));
    }
    return record;
}

// ---- Objects

void ModelTreeBuilder::startObject(std::optional<std::string_view> className,
                                   std::optional<std::string_view> identifier, std::size_t line) {
    m_className = owned(className);
    m_identifier = owned(identifier);
    m_line = line;
    m_relationships = {};
    m_draft.clear();
    if (className) m_draft.set("class", *className);
    if (identifier) m_draft.set("id", *identifier);
}

void ModelTreeBuilder::relationship(std::string_view name, std::optional<std::string_view> targets) {
    if (name == "parent") m_relationships.parent = owned(targets);
    if (name == "children") m_relationships.children = owned(targets);
    if (name == "inputs") m_relationships.inputs = owned(targets);
    if (name == "outputs") m_relationships.outputs = owned(targets);
}

void ModelTreeBuilder::endObject() {
    if (m_className == templateClass) {
        m_templates.push_back(m_identifier.value_or(""));
        return;
    }
    checkClass();
    addObject();
}

void ModelTreeBuilder::checkClass() const {
    const std::string className = m_className.value_or("");
    if (findModelClass(className) != nullptr) return;
    throw OrreryError(fmt::format("Couldn't find class for {} (object {}{}).", messageText(className),
                                  quoted(m_identifier.value_or("")), m_className ? "" : ", which has no type"),
                      Place{m_fileName, m_line},
                      fmt::format("The type must be one of {} or {}.", knownClassNames(), templateClass));
}

void ModelTreeBuilder::addObject() {
    ModelNode& node = m_tree.m_nodes.emplace_back();
    node.record = m_draft.take();
    node.record.remove("attributes");
    node.record.remove("relationships");
    if (!node.record.contains("name")) node.record.append("name", std::string(node.record.text("class")));
    node.kind = kindOfClass(node.record.text("class"));
    m_lines.push_back(m_line);
    addToIndex(m_lines.size() - 1);

    if (m_className == levelClass && !m_relationships.parent) {
        m_rootIdentifier = node.record.text("id");
        m_tree.m_root = &node;
    }
    if (node.kind != ModelNodeKind::Port) {
        m_relationships.node = m_lines.size() - 1;
        m_owners.push_back(std::move(m_relationships));
    }
}

void ModelTreeBuilder::addToIndex(std::size_t node) {
    const std::string* identifier = m_tree.m_nodes[node].record.find("id");
    if (identifier == nullptr) return; // nothing can refer to it
    const std::uint32_t before = m_nodeOfIdentifier.put(*identifier, static_cast<std::uint32_t>(node));
    if (before != m_nodeOfIdentifier.none && ++m_repeats <= loggedRepeats) {
        m_repeatNotes.push_back(fmt::format("{}: identifier {} is used again; it was used at line {} and now names "
                                            "this object.",
                                            placeOf(node).text(), quoted(*identifier), m_lines[before]));
    }
}

// ---- The tree

ModelTree ModelTreeBuilder::build() {
    logRepeats();
    if (m_rootIdentifier.empty()) failWithoutRoot();
    for (const Relationships& object : m_owners) {
        collectAttachments(object);
    }
    link();
    checkAncestors();
    return std::move(m_tree);
}

void ModelTreeBuilder::logRepeats() const {
    for (const std::string& note : m_repeatNotes) {
        logLine(note);
    }
    if (m_repeats > loggedRepeats) {
        logLine(fmt::format("{}: {} more identifiers are used again.", m_fileName, m_repeats - loggedRepeats));
    }
}

void ModelTreeBuilder::collectAttachments(const Relationships& object) {
    const std::size_t node = object.node;
    if (object.parent && object.parent->substr(0, object.parent->find(' ')) == m_rootIdentifier) {
        m_tree.m_topLevel.push_back(&m_tree.m_nodes[node]);
    }
    if (m_tree.m_nodes[node].kind == ModelNodeKind::Level) attachAll(node, resolve(node, "children", object.children));
    const std::size_t inputs = addPortGroup(node, "inputs");
    const std::size_t outputs = addPortGroup(node, "outputs");
    attachAll(inputs, resolve(node, "inputs", object.inputs));
    attachAll(outputs, sortedByVarid(resolve(node, "outputs", object.outputs)));
}

/// The nodes that the relationship names, in its order.
ModelTreeBuilder::Nodes ModelTreeBuilder::resolve(std::size_t node, std::string_view relationship,
                                                  const std::optional<std::string>& targets) const {
    Nodes nodes;
    if (targets) {
        splitAtBlanks(*targets, [&](std::string_view identifier) {
            const std::uint32_t found = m_nodeOfIdentifier.find(identifier);
            if (found == m_nodeOfIdentifier.none) failWithoutChild(node, relationship, identifier);
            nodes.push_back(found);
        });
    }
    return nodes;
}

std::size_t ModelTreeBuilder::addPortGroup(std::size_t owner, const char* name) {
    ModelNode& group = m_tree.m_nodes.emplace_back();
    group.kind = ModelNodeKind::PortGroup;
    group.record.append("name", name);
    m_attachments.push_back({owner, m_tree.m_nodes.size() - 1});
    return m_tree.m_nodes.size() - 1;
}

void ModelTreeBuilder::attachAll(std::size_t owner, const Nodes& children) {
    for (const std::size_t child : children) {
        m_attachments.push_back({owner, child});
    }
}

ModelTreeBuilder::Nodes ModelTreeBuilder::sortedByVarid(Nodes nodes) const {
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
void ModelTreeBuilder::link() {
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
void ModelTreeBuilder::checkAncestors() const {
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

void ModelTreeBuilder::checkDepth(std::size_t node, std::size_t depth) const {
    if (node >= m_lines.size() || m_tree.m_nodes[node].kind == ModelNodeKind::Port) return;
    if (depth <= modelDepthLimit) return;
    throw OrreryError(fmt::format("The {} is more than {} levels deep.", describe(node), modelDepthLimit),
                      placeOf(node), "Nest the model's levels less deeply.");
}

// ---- What may be wrong

void ModelTreeBuilder::failWithoutRoot() const {
    const char* reason = "no level (KSLEVEL) is without a parent";
    if (m_tree.m_root != nullptr) reason = "the level without a parent has no identifier";
    if (m_tree.m_nodes.empty()) reason = "there are no model objects directly under <database>";
    throw OrreryError(fmt::format("No root: {}.", reason), Place{m_fileName},
                      "Check that this is a model file, open it in the modelling tool and save it again.");
}

void ModelTreeBuilder::failWithoutChild(std::size_t node, std::string_view relationship,
                                        std::string_view identifier) const {
    const char* reason = "no object has that identifier";
    if (identifier.empty()) reason = "that is an empty reference (no text, or two blanks in a row)";
    if (std::ranges::find(m_templates, identifier) != m_templates.end()) {
        reason = "that is a template, which is not part of a model";
    }
    throw OrreryError(fmt::format("Failure to find child node: {} names {} among its “{}”, but {}.", describe(node),
                                  quoted(identifier), relationship, reason),
                      placeOf(node), "Remove the reference, or open the model in the modelling tool and save it.");
}

void ModelTreeBuilder::failAsOwnAncestor(std::size_t node) const {
    const std::size_t object = node < m_lines.size() ? node : m_parents[node]; // a group belongs to one
    throw OrreryError(fmt::format("The {} would be its own ancestor.", describe(object)), placeOf(object),
                      "Remove it from the lists of the parts and levels inside it.");
}

/// level “Field” (object “z1”)
std::string ModelTreeBuilder::describe(std::size_t node) const {
    const ModelNode& object = m_tree.m_nodes[node];
    const char* kind = object.kind == ModelNodeKind::Level  ? "level"
                       : object.kind == ModelNodeKind::Port ? "port"
                                                            : "part";
    return fmt::format("{} {} (object {})", kind, quoted(object.name()), quoted(object.record.text("id")));
}

} // namespace orrery
