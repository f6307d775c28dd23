#pragma once

#include "app/widgets/InterfaceDescriptions.h"
#include "document/MyDocument.h"
#include "model/PortPaths.h"

#include <QObject>
#include <QPointer>
#include <optional>

class QAction;

namespace orrery {

class PortTableView;

/// The commands of the Setup menu, and undo, redo and the model's filter in the Edit menu; the tables and the outline
/// offer theirs in context menus too.
class EditCommands : public QObject {
    Q_OBJECT

public:
    EditCommands(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu);
    ~EditCommands() override;
    void validate(); // enables what can be done now, and names what would be undone

private:
    void connectCommands();
    void addContextMenus();
    void nameSteps();
    void focusChanged(QWidget* now);
    void addSelectedPorts(PortList list);
    /// Which way all selected nodes face; nothing when they do not agree, or when one is not a port.
    [[nodiscard]] std::optional<PortDirection> selectedDirection() const;
    void moveRows(int direction);
    void removeRows();
    void stepBack(bool redo);

    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    Ui::MainMenu& m_menu;
    QPointer<PortTableView> m_table; // the one that has the focus
};

} // namespace orrery
