#include "app/setup/ModelOutlineModel.h"

#include "app/setup/NodeIcons.h"
#include "app/setup/NodeText.h"
#include "model/PortPaths.h"
#include "platform/qt/QtText.h"

#include <algorithm>
#include <utility>

namespace orrery {

namespace {

/// Whether a node answers to a filter's text.
class NodeMatch {
public:
    explicit NodeMatch(const QString& text)
        : m_text(text), m_ascii(coreText(text.toLower())), m_isAscii(m_ascii.size() == std::size_t(text.size())),
          m_wantsPath(text.contains('/')) {}

    /// A path holds what its beginning holds, so with a path only the first match on the way down counts.
    [[nodiscard]] bool operator()(const ModelNode& node, bool isInsideMatch) const {
        if (m_wantsPath) return !isInsideMatch && qtText(pathToFind(node)).contains(m_text, Qt::CaseInsensitive);
        // Every part has its groups, so they answer to their full names only.
        if (node.kind == ModelNodeKind::PortGroup) return node.name() == m_ascii;
        return m_isAscii ? holdsAscii(node.name()) : qtText(node.name()).contains(m_text, Qt::CaseInsensitive);
    }

private:
    static std::string pathToFind(const ModelNode& node) {
        if (const auto port = portReference(node)) return port->path;
        return node.kind == ModelNodeKind::PortGroup ? std::string() : "/" + pathForNode(node);
    }

    [[nodiscard]] bool holdsAscii(std::string_view name) const {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
        return std::search(name.begin(), name.end(), m_ascii.begin(), m_ascii.end(),
                           [&](char left, char right) { return lower(left) == right; }) != name.end();
    }

    const QString& m_text;
    std::string m_ascii; // in lower case
    bool m_isAscii;
    bool m_wantsPath;
};

// Positions are scattered over all numbers: Qt finds the indexes that it keeps by a sum of row and identifier, and
// where those lie side by side by the thousand, it takes thousands of steps to let one go.
constexpr std::uint64_t scatter = 0x9E37'79B9'7F4A'7C15;
constexpr std::uint64_t gather = 0xF1DE'83E1'9937'733D;
static_assert(scatter * gather == 1);

quintptr identifierOf(std::size_t position) {
    return quintptr{std::uint64_t{position} * scatter};
}

} // namespace

std::size_t ModelOutlineModel::position(const QModelIndex& index) {
    return static_cast<std::size_t>(static_cast<quintptr>(index.internalId() * gather));
}

void ModelOutlineModel::setTree(const ModelTree& tree) {
    m_items.clear(); // the nodes that it names are gone: nothing may look at them while the views are told
    m_topCount = 0;
    m_tree = &tree;
    rebuild();
}

void ModelOutlineModel::setFilter(const QString& text) {
    if (text == m_filter) return;
    m_filter = text;
    rebuild();
}

void ModelOutlineModel::rebuild() {
    beginResetModel();
    m_items = allItems();
    if (!m_filter.isEmpty()) m_items = filteredItems(std::move(m_items));
    placeItems();
    endResetModel();
}

std::vector<ModelOutlineModel::Item> ModelOutlineModel::allItems() const {
    std::vector<Item> items;
    if (m_tree == nullptr) return items;
    items.reserve(m_tree->nodeCount());
    for (const ModelNode* top : m_tree->topLevel()) {
        items.push_back({top, -1});
    }
    for (std::size_t position = 0; position < items.size(); ++position) {
        for (const ModelNode* child : items[position].node->children) {
            items.push_back({child, static_cast<std::int32_t>(position)});
        }
    }
    return items;
}

std::vector<ModelOutlineModel::Item> ModelOutlineModel::filteredItems(std::vector<Item> items) const {
    const NodeMatch matches(m_filter);
    std::vector<bool> isMatch(items.size());
    std::vector<bool> isInside(items.size()); // a match, or inside one
    for (std::size_t position = 0; position < items.size(); ++position) {
        const Item& item = items[position];
        const bool isInsideParent = item.parent >= 0 && isInside[std::size_t(item.parent)];
        isMatch[position] = matches(*item.node, isInsideParent);
        isInside[position] = isInsideParent || isMatch[position];
    }
    for (std::size_t position = items.size(); position-- > 0;) {
        const Item& item = items[position];
        if (item.parent >= 0 && (item.found || isMatch[position])) items[std::size_t(item.parent)].found = true;
    }
    std::vector<Item> shown;
    std::vector<std::int32_t> newPosition(items.size(), -1);
    for (std::size_t position = 0; position < items.size(); ++position) {
        if (!isInside[position] && !items[position].found) continue;
        newPosition[position] = static_cast<std::int32_t>(shown.size());
        shown.push_back(items[position]);
        std::int32_t& parent = shown.back().parent;
        if (parent >= 0) parent = newPosition[std::size_t(parent)];
    }
    return shown;
}

void ModelOutlineModel::placeItems() {
    m_topCount = 0;
    for (std::size_t position = 0; position < m_items.size(); ++position) {
        Item& item = m_items[position];
        if (item.parent < 0) {
            item.row = m_topCount++;
            continue;
        }
        Item& parent = m_items[std::size_t(item.parent)];
        if (parent.children == 0) parent.firstChild = static_cast<std::int32_t>(position);
        item.row = parent.children++;
    }
    countLines();
}

/// First how many lines a node and all inside it take, from the deepest up; then from the top down where each begins.
void ModelOutlineModel::countLines() {
    std::vector<std::int32_t> lines(m_items.size(), 1);
    for (std::size_t position = m_items.size(); position-- > 0;) {
        if (const std::int32_t parent = m_items[position].parent; parent >= 0)
            lines[std::size_t(parent)] += lines[position];
    }
    for (std::size_t position = 0; position < m_items.size(); ++position) {
        Item& item = m_items[position];
        const bool isFirst = item.row == 0;
        item.line = !isFirst          ? m_items[position - 1].line + lines[position - 1]
                    : item.parent < 0 ? 0
                                      : m_items[std::size_t(item.parent)].line + 1;
    }
}

const ModelOutlineModel::Item* ModelOutlineModel::item(const QModelIndex& index) const {
    return index.isValid() && position(index) < m_items.size() ? &m_items[position(index)] : nullptr;
}

QModelIndex ModelOutlineModel::indexOf(std::int32_t position) const {
    if (position < 0) return {};
    return createIndex(m_items[std::size_t(position)].row, 0, identifierOf(std::size_t(position)));
}

const ModelNode* ModelOutlineModel::node(const QModelIndex& index) const {
    const Item* shown = item(index);
    return shown == nullptr ? nullptr : shown->node;
}

std::vector<QModelIndex> ModelOutlineModel::ancestorsOfMatches() const {
    std::vector<QModelIndex> found;
    for (std::size_t position = 0; position < m_items.size(); ++position) {
        if (m_items[position].found) found.push_back(indexOf(static_cast<std::int32_t>(position)));
    }
    return found;
}

std::vector<bool> ModelOutlineModel::positionsOf(const QItemSelection& selection) const {
    std::vector<bool> positions(m_items.size());
    for (const QItemSelectionRange& range : selection) {
        if (!range.isValid()) continue;
        for (std::size_t each = position(range.topLeft()); each <= position(range.bottomRight()); ++each) {
            positions[each] = true; // brothers stand together
        }
    }
    return positions;
}

QItemSelection ModelOutlineModel::selectionOf(const std::vector<bool>& positions) const {
    QItemSelection selection;
    const auto indexAt = [this](std::size_t position) { return indexOf(static_cast<std::int32_t>(position)); };
    for (std::size_t begin = 0; begin < positions.size(); ++begin) {
        if (!positions[begin]) continue;
        std::size_t end = begin + 1;
        while (end < positions.size() && positions[end] && m_items[end].parent == m_items[begin].parent)
            ++end;
        selection.append(QItemSelectionRange(indexAt(begin), indexAt(end - 1)));
        begin = end - 1;
    }
    return selection;
}

std::vector<bool> ModelOutlineModel::inSight(const std::function<bool(const QModelIndex&)>& isExpanded) const {
    std::vector<bool> shown(m_items.size());
    std::vector<bool> open(m_items.size());
    for (std::size_t position = 0; position < m_items.size(); ++position) {
        const Item& item = m_items[position];
        shown[position] = item.parent < 0 || open[std::size_t(item.parent)];
        open[position] = shown[position] && item.children > 0 && isExpanded(indexOf(std::int32_t(position)));
    }
    return shown;
}

std::vector<std::size_t> ModelOutlineModel::inTreeOrder(const std::vector<bool>& positions) const {
    std::vector<std::size_t> onLine(m_items.size(), m_items.size()); // the size stands for none
    for (std::size_t position = 0; position < positions.size(); ++position) {
        if (positions[position]) onLine[std::size_t(m_items[position].line)] = position;
    }
    std::erase(onLine, m_items.size());
    return onLine;
}

std::string ModelOutlineModel::path(const QModelIndex& index) const {
    std::string path;
    for (const Item* each = item(index); each != nullptr;
         each = each->parent < 0 ? nullptr : &m_items[std::size_t(each->parent)]) {
        path.insert(0, std::string(each->node->name()) + (path.empty() ? "" : "/"));
    }
    return path;
}

QModelIndex ModelOutlineModel::indexForPath(std::string_view path) const {
    std::vector<std::pair<QModelIndex, std::string_view>> toSearch{{QModelIndex(), path}};
    while (!toSearch.empty()) { // a name may hold slashes itself, so more than one node may begin the path
        const auto [parent, rest] = toSearch.back();
        toSearch.pop_back();
        for (int row = 0; row < rowCount(parent); ++row) {
            const QModelIndex child = index(row, 0, parent);
            const std::string_view name = node(child)->name();
            if (rest == name) return child;
            if (rest.size() > name.size() && rest.starts_with(name) && rest[name.size()] == '/')
                toSearch.emplace_back(child, rest.substr(name.size() + 1));
        }
    }
    return {};
}

QModelIndex ModelOutlineModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column != 0 || row >= rowCount(parent)) return {};
    const Item* owner = item(parent);
    const auto first = std::size_t(owner == nullptr ? 0 : owner->firstChild);
    return createIndex(row, 0, identifierOf(first + std::size_t(row)));
}

QModelIndex ModelOutlineModel::parent(const QModelIndex& child) const {
    const Item* shown = item(child);
    return shown == nullptr ? QModelIndex() : indexOf(shown->parent);
}

int ModelOutlineModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) return m_topCount;
    const Item* owner = item(parent);
    return owner == nullptr ? 0 : owner->children;
}

int ModelOutlineModel::columnCount(const QModelIndex& /*parent*/) const {
    return 1;
}

QVariant ModelOutlineModel::data(const QModelIndex& index, int role) const {
    const ModelNode* shown = node(index);
    if (shown == nullptr) return {};
    switch (role) {
    case Qt::DisplayRole:
        return qtText(shown->name());
    case Qt::DecorationRole:
        return nodeIcon(*shown);
    case Qt::ToolTipRole:
        return nodeToolTip(*shown);
    case Qt::AccessibleTextRole:
        return qtText(shown->name()) + ", " + nodeKindWord(*shown);
    default:
        return {};
    }
}

Qt::ItemFlags ModelOutlineModel::flags(const QModelIndex& index) const {
    const ModelNode* shown = node(index);
    if (shown == nullptr) return Qt::NoItemFlags;
    const Qt::ItemFlags shownFlags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return shown->kind == ModelNodeKind::Port ? shownFlags | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren
                                              : shownFlags;
}

} // namespace orrery
