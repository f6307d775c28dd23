#pragma once

#include <QStyledItemDelegate>

namespace orrery {

/// Edits the cells of a port table in place.
class PortCellDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

signals:
    /// What was typed into the cell cannot be taken; the old value stays.
    void refused(const QPersistentModelIndex& cell, const QString& reason) const;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace orrery
