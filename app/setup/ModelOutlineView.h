#pragma once

#include "platform/Outlets.h"

#include <QTreeView>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace orrery {

struct ModelNode;
class ModelOutlineModel;
class MyDocument;
class OutlineSelection;

/// The model's tree: shows it, filters it, and lets ports be dragged out of it.
///
/// What is expanded and which node is current are kept by path when the model is imported again or filtered.
class ModelOutlineView : public QTreeView, public ListView {
    Q_OBJECT

public:
    explicit ModelOutlineView(QWidget* parent = nullptr);
    void setDocument(const MyDocument& document);
    void release(); // the document goes

    void reloadData() override;
    void selectRows(const std::vector<std::size_t>& /*rows*/) override {} // the document selects nothing here
    void setFilter(const QString& text);
    void selectAll() override; // that can be scrolled to
    void enter();              // takes the keyboard, with the first row where none was current

    /// The selected nodes in the order in which they are shown. What lies in a collapsed node is not among them: it
    /// keeps its selection, for when the node is expanded again, but nobody sees that it has one.
    [[nodiscard]] std::vector<const ModelNode*> selectedNodes() const;

signals:
    void selectedNodesChanged();

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void paintEvent(QPaintEvent* event) override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    [[nodiscard]] QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void rememberExpanded(const QModelIndex& index, bool isNowExpanded);
    void followExpansion();
    [[nodiscard]] std::vector<bool> inSight() const;
    [[nodiscard]] QModelIndex rowAt(int x, int y);
    void restoreState();
    void expandRemembered(const QModelIndex& parent, const std::string& prefix);
    void expandAtFirst();
    [[nodiscard]] QString emptyStateText() const;

    const MyDocument* m_document = nullptr;
    ModelOutlineModel* m_model;
    OutlineSelection* m_selection;
    bool m_isRestoring = false;
    bool m_tellsSoon = false;                           // of the nodes that came into sight or went
    std::set<std::string, std::less<>> m_expandedPaths; // without a filter
    std::string m_currentPath;
};

} // namespace orrery
