#pragma once

#include "model/ModelTree.h"

#include <QAbstractItemModel>
#include <QItemSelection>
#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

namespace orrery {

/// Presents the levels, parts and ports of a model, or what a filter leaves of them.
///
/// It holds a table of the shown nodes, parents before children, so that every question of a view is answered without a
/// search. Its indexes carry positions in that table and no node's address: the nodes may be gone already when the
/// model is told so.
class ModelOutlineModel : public QAbstractItemModel {
    Q_OBJECT

public:
    using QAbstractItemModel::QAbstractItemModel;

    /// Shows the tree, which may have replaced the one shown before in its place.
    void setTree(const ModelTree& tree);
    /// Shows only the nodes whose name or path holds the text, in whatever case, with their ancestors and with what is
    /// inside them. A text with a slash is looked for in port paths and paths of parts.
    void setFilter(const QString& text);
    [[nodiscard]] const QString& filter() const { return m_filter; }

    [[nodiscard]] const ModelNode* node(const QModelIndex& index) const; // nullptr without one
    [[nodiscard]] std::size_t shownCount() const { return m_items.size(); }
    /// What a filter has found inside of; to be expanded.
    [[nodiscard]] std::vector<QModelIndex> ancestorsOfMatches() const;

    // Sets of nodes, by their positions in the table.
    [[nodiscard]] static std::size_t position(const QModelIndex& index);
    [[nodiscard]] std::vector<bool> positionsOf(const QItemSelection& selection) const;
    [[nodiscard]] QItemSelection selectionOf(const std::vector<bool>& positions) const;
    /// What a view shows that has expanded the nodes of which the function says so.
    [[nodiscard]] std::vector<bool> inSight(const std::function<bool(const QModelIndex&)>& isExpanded) const;
    /// Those of the nodes that are in the set, from the top of the outline to its end when all is expanded.
    [[nodiscard]] std::vector<std::size_t> inTreeOrder(const std::vector<bool>& positions) const;
    [[nodiscard]] const ModelNode& nodeAt(std::size_t position) const { return *m_items[position].node; }

    /// The names from the top of the outline down, joined by slashes, and what is shown under them.
    [[nodiscard]] std::string path(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexForPath(std::string_view path) const;

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    struct Item {
        const ModelNode* node;
        std::int32_t parent; // position in the table, -1 at the top
        std::int32_t row = 0;
        std::int32_t line = 0; // when all is expanded
        std::int32_t firstChild = 0;
        std::int32_t children = 0;
        bool found = false; // a filter has found something inside
    };

    void rebuild();
    [[nodiscard]] std::vector<Item> allItems() const;
    [[nodiscard]] std::vector<Item> filteredItems(std::vector<Item> items) const;
    void placeItems();
    void countLines();
    [[nodiscard]] const Item* item(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexOf(std::int32_t position) const;

    const ModelTree* m_tree = nullptr;
    QString m_filter;
    std::vector<Item> m_items; // breadth first: the children of an item stand together
    std::int32_t m_topCount = 0;
};

} // namespace orrery
