#pragma once

#include <QTreeView>

namespace orrery {

/// The model's tree.
class ModelOutlineView : public QTreeView {
    Q_OBJECT

public:
    using QTreeView::QTreeView;
};

} // namespace orrery
