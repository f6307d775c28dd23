#include "app/setup/PortTableView.h"

#include "app/setup/PortCellDelegate.h"
#include "app/setup/PortTableModel.h"
#include "app/widgets/DragPicture.h"
#include "app/widgets/EmptyStateText.h"
#include "platform/qt/QtPasteboard.h"

#include <QDrag>
#include <QDropEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QPainter>
#include <QScopedValueRollback>
#include <QToolTip>
#include <algorithm>

namespace orrery {

namespace {

/// Rows that follow each other as one stretch: the selection's time grows with the square of the stretches.
QItemSelection selectionOf(const PortTableModel& model, const std::vector<std::size_t>& rows) {
    QItemSelection selection;
    for (std::size_t first = 0, end = 0; first < rows.size(); first = end) {
        end = first + 1;
        while (end < rows.size() && rows[end] == rows[end - 1] + 1)
            ++end;
        selection.append(QItemSelectionRange(model.index(static_cast<int>(rows[first]), 0),
                                             model.index(static_cast<int>(rows[end - 1]), 0)));
    }
    return selection;
}

} // namespace

PortTableView::PortTableView(QWidget* parent) : QTableView(parent) {
    auto* delegate = new PortCellDelegate(this);
    setItemDelegate(delegate);
    setWordWrap(false);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    setHorizontalScrollMode(ScrollPerPixel);
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    // Queued: the editor that goes now would take the tool tip with it.
    connect(delegate, &PortCellDelegate::refused, this, &PortTableView::showRefusal, Qt::QueuedConnection);
}

void PortTableView::setDocument(MyDocument& document, PortList list) {
    m_document = &document;
    m_list = list;
    m_model = new PortTableModel(document, list, this);
    setModel(m_model);
    layOutColumns();
    reloadData();
}

void PortTableView::release() {
    setModel(nullptr);
    m_document = nullptr;
}

void PortTableView::layOutColumns() {
    QHeaderView& header = *horizontalHeader();
    header.setStretchLastSection(false);
    header.setMinimumSectionSize(fontMetrics().averageCharWidth() * 6);
    header.setSectionResizeMode(PortTableModel::portColumn(), QHeaderView::Stretch);
    for (int column = 1; column < m_model->columnCount(); ++column) {
        const int characters = m_list == PortList::Outputs ? 30 : 14;
        header.resizeSection(column, fontMetrics().averageCharWidth() * characters);
    }
}

void PortTableView::setEmptyStateText(const QString& words) {
    m_emptyStateText = words;
    viewport()->update();
}

void PortTableView::reloadData() {
    if (m_model == nullptr) return;
    const QScopedValueRollback reloading(m_isReloading, true);
    m_model->reload();
}

void PortTableView::selectRows(const std::vector<std::size_t>& rows) {
    if (m_document == nullptr) return;
    if (rows != selectedRowNumbers()) {
        const QScopedValueRollback reloading(m_isReloading, true);
        selectionModel()->select(selectionOf(*m_model, rows),
                                 QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        if (!rows.empty() && std::ranges::find(rows, std::size_t(currentIndex().row())) == rows.end()) {
            const int column = std::max(currentIndex().column(), 0);
            selectionModel()->setCurrentIndex(m_model->index(static_cast<int>(rows.front()), column),
                                              QItemSelectionModel::NoUpdate);
        }
        if (!rows.empty()) scrollTo(currentIndex());
    }
    emit selectedRowsChanged();
}

void PortTableView::showCell(std::size_t row, std::string_view fieldKey) {
    if (m_document == nullptr || row >= static_cast<std::size_t>(m_model->rowCount())) return;
    const QModelIndex cell = m_model->index(static_cast<int>(row), m_model->columnOf(fieldKey));
    selectionModel()->setCurrentIndex(cell, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(cell);
}

bool PortTableView::hasSelection() const {
    return selectionModel() != nullptr && selectionModel()->hasSelection();
}

std::vector<std::size_t> PortTableView::selectedRowNumbers() const {
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : selectionModel()->selectedRows()) {
        rows.push_back(static_cast<std::size_t>(index.row()));
    }
    std::ranges::sort(rows);
    return rows;
}

void PortTableView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    if (m_isReloading || m_document == nullptr) return;
    m_document->controller(m_list).setSelection(selectedRowNumbers());
    emit selectedRowsChanged();
}

/// The document moves the rows when they are dropped; nothing is removed here after the drag, whatever it came to.
void PortTableView::startDrag(Qt::DropActions /*supportedActions*/) {
    if (m_document == nullptr) return;
    const std::vector<std::size_t> rows = selectedRowNumbers();
    auto* carried = new QMimeData;
    QtPasteboard pasteboard(carried);
    if (rows.empty() || !m_document->tableViewWriteRows(m_list, rows, pasteboard)) {
        delete carried;
        return;
    }
    auto* drag = new QDrag(this);
    drag->setMimeData(carried);
    const QString port = m_model->index(static_cast<int>(rows.front()), PortTableModel::portColumn()).data().toString();
    drag->setPixmap(dragPicture(*this, rows.size() == 1 ? port : tr("%1 rows").arg(rows.size())));
    drag->setHotSpot(QPoint(-12, -6));
    drag->exec(Qt::MoveAction | Qt::CopyAction, Qt::MoveAction);
}

PortTableView::DropTarget PortTableView::proposedTarget(int y, bool onlyBetween) const {
    const int row = rowAt(y);
    if (row < 0) return {y < 0 ? std::size_t(0) : std::size_t(m_model->rowCount())};
    const int height = rowHeight(row);
    const int inside = y - rowViewportPosition(row);
    const int edge = onlyBetween ? (height + 1) / 2 : height / 4;
    if (inside <= edge) return {static_cast<std::size_t>(row)};
    if (inside >= height - edge) return {static_cast<std::size_t>(row) + 1};
    return {static_cast<std::size_t>(row), DropOperation::On};
}

std::optional<PortTableView::DropTarget> PortTableView::dropTarget(const QDropEvent& event) const {
    if (m_document == nullptr || event.source() == nullptr) return std::nullopt; // from another program
    const QtPasteboard pasteboard(event.mimeData());
    const DropDecision decision = MyDocument::tableViewValidateDrop(m_list, pasteboard);
    if (decision.operation == DragOperation::None) return std::nullopt;
    const bool isMove = decision.operation == DragOperation::Move;
    if (isMove && event.source() != this) return std::nullopt; // row numbers of another document's table
    DropTarget target = proposedTarget(event.position().toPoint().y(), decision.retargetAbove);
    if (decision.retargetAbove) target.operation = DropOperation::Above;
    target.action = isMove ? Qt::MoveAction : Qt::CopyAction;
    return target;
}

void PortTableView::showTarget(std::optional<DropTarget> target) {
    if (target == m_target) return;
    m_target = target;
    viewport()->update();
}

void PortTableView::dragEnterEvent(QDragEnterEvent* event) {
    if (!dropTarget(*event)) return event->ignore();
    setState(DraggingState);
    event->accept();
}

void PortTableView::dragMoveEvent(QDragMoveEvent* event) {
    const std::optional<DropTarget> target = dropTarget(*event);
    showTarget(target);
    if (!target) return event->ignore();
    event->setDropAction(target->action);
    event->accept();
    startAutoScroll(); // it acts near the edges only
}

void PortTableView::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
    stopAutoScroll();
    setState(NoState);
    showTarget({});
}

void PortTableView::dropEvent(QDropEvent* event) {
    const std::optional<DropTarget> target = dropTarget(*event);
    stopAutoScroll();
    setState(NoState);
    showTarget({});
    if (!target || m_document == nullptr) return event->ignore();
    const QtPasteboard pasteboard(event->mimeData());
    if (!m_document->tableViewAcceptDrop(m_list, pasteboard, target->row, target->operation)) return event->ignore();
    event->setDropAction(target->action);
    event->accept();
    setFocus();
}

void PortTableView::drawTarget(QPainter& painter) const {
    constexpr double width = 2;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette().color(QPalette::Highlight), width));
    const int row = static_cast<int>(m_target->row);
    const QRectF area = viewport()->rect();
    if (m_target->operation == DropOperation::On) {
        painter.drawRoundedRect(QRectF(1, rowViewportPosition(row) + 1, area.width() - 2, rowHeight(row) - 3), 3, 3);
        return;
    }
    const int rows = m_model->rowCount();
    const int edge = rows == 0    ? 0
                     : row < rows ? rowViewportPosition(row)
                                  : rowViewportPosition(rows - 1) + rowHeight(rows - 1);
    const double y = std::clamp<double>(edge, width + 1, area.height() - width - 1);
    painter.drawEllipse(QPointF(4, y), 2.5, 2.5);
    painter.drawLine(QPointF(7, y), QPointF(area.width() - 2, y));
}

void PortTableView::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (m_model == nullptr) return;
    if (m_model->rowCount() == 0) drawEmptyState(*this, m_emptyStateText);
    if (!m_target) return;
    QPainter painter(viewport());
    drawTarget(painter);
}

void PortTableView::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && state() != EditingState && currentIndex().isValid()) {
        edit(currentIndex());
        return;
    }
    QTableView::keyPressEvent(event);
}

/// Tab goes from cell to cell, and on to the next control from the last one.
bool PortTableView::focusNextPrevChild(bool next) {
    const int last = model() == nullptr ? 0 : model()->rowCount() * model()->columnCount() - 1;
    const QModelIndex current = currentIndex();
    const int cell = current.isValid() ? current.row() * model()->columnCount() + current.column() : -1;
    const bool leaves = last < 0 || (next ? cell == last : cell <= 0);
    setTabKeyNavigation(!leaves);
    const bool moved = QTableView::focusNextPrevChild(next);
    setTabKeyNavigation(true);
    return moved;
}

void PortTableView::showRefusal(const QPersistentModelIndex& cell, const QString& reason) {
    if (!cell.isValid()) return;
    const QRect place = visualRect(cell);
    QToolTip::showText(viewport()->mapToGlobal(place.bottomLeft()), reason, viewport(), place);
}

} // namespace orrery
