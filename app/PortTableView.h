#pragma once

#include <QTableView>

namespace orrery {

/// The table of one port list.
class PortTableView : public QTableView {
    Q_OBJECT

public:
    using QTableView::QTableView;
};

} // namespace orrery
