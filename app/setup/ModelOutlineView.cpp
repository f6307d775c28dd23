#include "app/setup/ModelOutlineView.h"

#include "app/setup/ModelOutlineModel.h"
#include "app/setup/OutlineSelection.h"
#include "app/widgets/DragPicture.h"
#include "app/widgets/EmptyStateText.h"
#include "document/MyDocument.h"
#include "platform/qt/QtPasteboard.h"
#include "platform/qt/QtText.h"

#include <QDrag>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QTimer>
#include <algorithm>
#include <functional>

namespace orrery {

namespace {

constexpr std::size_t fewNodes = 60;             // a model of that size is shown wide open
constexpr std::size_t mostExpandedAtOnce = 2000; // by a filter: nobody reads more

} // namespace

ModelOutlineView::ModelOutlineView(QWidget* parent)
    : QTreeView(parent), m_model(new ModelOutlineModel(this)), m_selection(new OutlineSelection(*m_model, this)) {
    setModel(m_model);
    delete selectionModel(); // the view's own
    setSelectionModel(m_selection);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) { rememberExpanded(index, true); });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& index) { rememberExpanded(index, false); });
}

void ModelOutlineView::setDocument(const MyDocument& document) {
    m_document = &document;
    reloadData();
}

void ModelOutlineView::release() {
    m_selection->reset();
    setModel(nullptr);
    m_document = nullptr;
}

void ModelOutlineView::reloadData() {
    if (m_document == nullptr) return;
    const bool wasEmpty = m_model->shownCount() == 0 && m_model->filter().isEmpty();
    {
        const QScopedValueRollback restoring(m_isRestoring, true);
        m_model->setTree(m_document->model().tree());
        if (wasEmpty && m_expandedPaths.empty()) expandAtFirst();
        restoreState();
    }
    emit selectedNodesChanged();
}

void ModelOutlineView::setFilter(const QString& text) {
    {
        const QScopedValueRollback restoring(m_isRestoring, true);
        m_model->setFilter(text);
        restoreState();
    }
    emit selectedNodesChanged();
}

void ModelOutlineView::expandAtFirst() {
    const bool isSmall = m_model->shownCount() <= fewNodes;
    std::vector<QModelIndex> toExpand{QModelIndex()};
    while (!toExpand.empty()) {
        const QModelIndex parent = toExpand.back();
        toExpand.pop_back();
        for (int row = 0; row < m_model->rowCount(parent); ++row) {
            const QModelIndex child = m_model->index(row, 0, parent);
            m_expandedPaths.insert(m_model->path(child));
            if (isSmall) toExpand.push_back(child);
        }
    }
}

/// After the model was replaced or filtered: everything that a view knows of it is gone.
void ModelOutlineView::restoreState() {
    if (m_model->filter().isEmpty()) {
        expandRemembered({}, {});
    } else {
        const std::vector<QModelIndex> found = m_model->ancestorsOfMatches();
        for (std::size_t each = 0; each < std::min(found.size(), mostExpandedAtOnce); ++each) {
            setExpanded(found[each], true);
        }
    }
    if (const QModelIndex current = m_model->indexForPath(m_currentPath); current.isValid()) {
        setCurrentIndex(current);
        scrollTo(current);
    }
}

/// In one walk over the remembered nodes and their brothers: to look for each from the top would take the square of a
/// large model's size. `prefix` is the parent's path with a slash.
void ModelOutlineView::expandRemembered(const QModelIndex& parent, const std::string& prefix) {
    for (int row = 0; row < m_model->rowCount(parent); ++row) {
        const QModelIndex child = m_model->index(row, 0, parent);
        std::string path = prefix + std::string(m_model->node(child)->name());
        if (m_expandedPaths.contains(path)) setExpanded(child, true);
        path += '/';
        const auto inside = m_expandedPaths.lower_bound(path);
        if (inside != m_expandedPaths.end() && inside->starts_with(path)) expandRemembered(child, path);
    }
}

void ModelOutlineView::rememberExpanded(const QModelIndex& index, bool isNowExpanded) {
    followExpansion();
    if (m_isRestoring || !m_model->filter().isEmpty()) return;
    if (isNowExpanded) {
        m_expandedPaths.insert(m_model->path(index));
    } else {
        m_expandedPaths.erase(m_model->path(index));
    }
}

void ModelOutlineView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    if (!m_isRestoring && current.isValid()) m_currentPath = m_model->path(current);
    QTreeView::currentChanged(current, previous);
}

void ModelOutlineView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    if (!m_isRestoring) emit selectedNodesChanged();
}

/// Once for any number of nodes that are expanded together.
void ModelOutlineView::followExpansion() {
    if (m_isRestoring || m_tellsSoon || !m_selection->hasSelection()) return;
    m_tellsSoon = true;
    QTimer::singleShot(0, this, [this] {
        m_tellsSoon = false;
        emit selectedNodesChanged();
    });
}

std::vector<bool> ModelOutlineView::inSight() const {
    return m_model->inSight([this](const QModelIndex& index) { return isExpanded(index); });
}

std::vector<const ModelNode*> ModelOutlineView::selectedNodes() const {
    if (!m_selection->hasSelection()) return {};
    std::vector<bool> chosen = m_selection->positions();
    const std::vector<bool> seen = inSight();
    std::transform(chosen.begin(), chosen.end(), seen.begin(), chosen.begin(), std::logical_and());
    std::vector<const ModelNode*> nodes;
    for (const std::size_t position : m_model->inTreeOrder(chosen)) {
        nodes.push_back(&m_model->nodeAt(position));
    }
    return nodes;
}

void ModelOutlineView::enter() {
    if (!currentIndex().isValid()) setCurrentIndex(m_model->index(0, 0));
    setFocus(Qt::OtherFocusReason);
}

void ModelOutlineView::selectAll() {
    m_selection->select(m_model->selectionOf(inSight()), QItemSelectionModel::ClearAndSelect);
}

/// Also far above what is shown. Qt rounds towards what is shown, and so is one row off there.
QModelIndex ModelOutlineView::rowAt(int x, int y) {
    const bool isRounded = y < 0 && verticalScrollMode() == ScrollPerItem;
    return indexAt({x, isRounded ? y + 1 - rowHeight(m_model->index(0, 0)) : y});
}

/// From the first node that the rectangle touches to the last, by the mouse or by Shift and a key; what is beside the
/// rows stands for the first or the last row.
void ModelOutlineView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) {
    const auto [top, bottom] = std::minmax({rect.top(), rect.bottom()});
    const QModelIndex first = rowAt(rect.left(), top);
    const QModelIndex last = rowAt(rect.left(), bottom);
    if (rect.isNull() || (!first.isValid() && !last.isValid())) return QTreeView::setSelection(rect, command);
    std::vector<std::size_t> shown = m_model->inTreeOrder(inSight());
    const auto rowOf = [&](const QModelIndex& index) { return std::ranges::find(shown, m_model->position(index)); };
    const auto begin = first.isValid() ? rowOf(first) : shown.begin();
    const auto end = last.isValid() ? rowOf(last) + 1 : shown.end();
    std::vector<bool> touched(m_model->shownCount());
    std::for_each(begin, end, [&touched](std::size_t position) { touched[position] = true; });
    m_selection->select(m_model->selectionOf(touched), command);
}

/// Of a large selection all is painted anew: to find its rows takes longer.
QRegion ModelOutlineView::visualRegionForSelection(const QItemSelection& selection) const {
    constexpr qsizetype fewRanges = 50;
    return selection.size() > fewRanges ? viewport()->rect() : QTreeView::visualRegionForSelection(selection);
}

void ModelOutlineView::startDrag(Qt::DropActions /*supportedActions*/) {
    const std::vector<const ModelNode*> nodes = selectedNodes();
    if (m_document == nullptr || nodes.empty()) return;
    const QString name = qtText(nodes.front()->name()); // the tree may be another one when the drag ends
    auto* carried = new QMimeData;
    QtPasteboard pasteboard(carried);
    if (!m_document->outlineViewWriteItems(nodes, pasteboard)) {
        delete carried;
        return;
    }
    auto* drag = new QDrag(this);
    drag->setMimeData(carried);
    drag->setPixmap(dragPicture(*this, name));
    drag->setHotSpot(QPoint(-12, -6));
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}

QString ModelOutlineView::emptyStateText() const {
    if (!m_model->filter().isEmpty()) return tr("Nothing in the model contains “%1”").arg(m_model->filter());
    if (m_document == nullptr || m_document->file().modelPath().empty())
        return tr("Choose a model file\n(Setup > Choose Model…)");
    return tr("The model was not read, or has no parts");
}

void ModelOutlineView::paintEvent(QPaintEvent* event) {
    QTreeView::paintEvent(event);
    if (m_model->rowCount() == 0) drawEmptyState(*this, emptyStateText());
}

} // namespace orrery
