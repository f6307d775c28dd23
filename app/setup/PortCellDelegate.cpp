#include "app/setup/PortCellDelegate.h"

#include "app/setup/PortTableModel.h"
#include "app/widgets/UndoPassThrough.h"
#include "platform/qt/QtElision.h"

#include <QLineEdit>
#include <QStyle>

namespace orrery {

QWidget* PortCellDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                        const QModelIndex& index) const {
    auto* editor = new QLineEdit(parent);
    editor->setObjectName("cellEditor");
    editor->setAccessibleName(index.model()->headerData(index.column(), Qt::Horizontal).toString());
    editor->setAlignment(Qt::Alignment(index.data(Qt::TextAlignmentRole).toInt()));
    letUndoPassThrough(*editor);
    return editor;
}

void PortCellDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
    auto* table = qobject_cast<PortTableModel*>(model);
    auto* field = qobject_cast<QLineEdit*>(editor);
    if (table == nullptr || field == nullptr) return;
    if (const QString reason = table->acceptText(index, field->text()); !reason.isEmpty()) emit refused(index, reason);
}

void PortCellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    option->textElideMode = Qt::ElideMiddle;
    const QWidget* table = option->widget;
    if (table == nullptr || option->rect.isEmpty()) return; // nothing is drawn: the cell is measured
    const QStyle* style = table->style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, option, table) + 1; // as the style leaves it
    const int width = style->subElementRect(QStyle::SE_ItemViewItemText, option, table).width() - 2 * margin;
    option->text = elidedName(option->text, option->fontMetrics, width);
}

} // namespace orrery
