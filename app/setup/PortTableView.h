#pragma once

#include "document/MyDocument.h"
#include "platform/Outlets.h"

#include <QTableView>
#include <optional>
#include <string_view>
#include <vector>

namespace orrery {

class PortTableModel;

/// The table of one port list: its cells are edited in place, ports are dropped on it and its rows moved by the mouse.
/// What a drop may do is the document's to say.
class PortTableView : public QTableView, public ListView {
    Q_OBJECT

public:
    explicit PortTableView(QWidget* parent = nullptr);
    void setDocument(MyDocument& document, PortList list);
    void release(); // the document goes
    [[nodiscard]] PortList portList() const { return m_list; }
    [[nodiscard]] bool hasSelection() const;

    void reloadData() override;
    void selectRows(const std::vector<std::size_t>& rows) override;
    /// Selects the row alone, makes the field's cell current and scrolls to it. A row outside the list: nothing.
    void showCell(std::size_t row, std::string_view fieldKey);
    void setEmptyStateText(const QString& words);

signals:
    void selectedRowsChanged();

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    struct DropTarget {
        std::size_t row = 0;
        DropOperation operation = DropOperation::Above;
        Qt::DropAction action = Qt::CopyAction;
        friend bool operator==(const DropTarget&, const DropTarget&) = default;
    };

    [[nodiscard]] std::vector<std::size_t> selectedRowNumbers() const;
    [[nodiscard]] std::optional<DropTarget> dropTarget(const QDropEvent& event) const;
    [[nodiscard]] DropTarget proposedTarget(int y, bool onlyBetween) const;
    void showTarget(std::optional<DropTarget> target);
    void drawTarget(QPainter& painter) const;
    void showRefusal(const QPersistentModelIndex& cell, const QString& reason);
    void layOutColumns();

    MyDocument* m_document = nullptr;
    PortList m_list = PortList::Outputs;
    PortTableModel* m_model = nullptr;
    QString m_emptyStateText;
    std::optional<DropTarget> m_target; // of the drag above the table
    bool m_isReloading = false;
};

} // namespace orrery
