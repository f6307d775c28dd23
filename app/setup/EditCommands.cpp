#include "app/setup/EditCommands.h"

#include "app/setup/ModelOutlineView.h"
#include "app/setup/PortTableView.h"
#include "app/widgets/GuardedPlot.h"
#include "app/widgets/PendingEdit.h"
#include "platform/qt/QtText.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

#include <QApplication>
#include <QMainWindow>
#include <algorithm>
#include <array>

namespace orrery {

namespace {

constexpr std::array allLists = {PortList::Outputs, PortList::Initializations, PortList::Steppers};

QAction* addAction(const Ui::MainMenu& menu, PortList list) {
    return list == PortList::Outputs           ? menu.actionAddToOutputs
           : list == PortList::Initializations ? menu.actionAddToInitializations
                                               : menu.actionAddToSteppers;
}

PortTableView* tableAround(QWidget* widget) {
    for (; widget != nullptr; widget = widget->parentWidget()) {
        if (auto* table = qobject_cast<PortTableView*>(widget)) return table;
    }
    return nullptr;
}

} // namespace

EditCommands::EditCommands(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu)
    : m_document(document), m_ui(ui), m_menu(menu) {
    connectCommands();
    addContextMenus();
    m_document.setup().observers().historyChanged = [this] { nameSteps(); };
    connect(m_ui.outlineView, &ModelOutlineView::selectedNodesChanged, this, &EditCommands::validate);
    for (PortTableView* table : {m_ui.outputTable, m_ui.inputTable, m_ui.stepperTable}) {
        connect(table, &PortTableView::selectedRowsChanged, this, &EditCommands::validate);
    }
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { focusChanged(now); });
}

EditCommands::~EditCommands() {
    m_document.setup().observers().historyChanged = {};
}

void EditCommands::connectCommands() {
    connect(m_menu.actionUndo, &QAction::triggered, this, [this] { stepBack(false); });
    connect(m_menu.actionRedo, &QAction::triggered, this, [this] { stepBack(true); });
    connect(m_menu.actionFilterModel, &QAction::triggered, this, [this] {
        m_ui.modelFilter->setFocus(Qt::ShortcutFocusReason);
        m_ui.modelFilter->selectAll();
    });
    connect(m_menu.actionSelectModel, &QAction::triggered, this, [this] { m_document.selectModel(); });
    for (const PortList list : allLists) {
        connect(addAction(m_menu, list), &QAction::triggered, this, [this, list] { addSelectedPorts(list); });
    }
    connect(m_menu.actionMoveUp, &QAction::triggered, this, [this] { moveRows(-1); });
    connect(m_menu.actionMoveDown, &QAction::triggered, this, [this] { moveRows(1); });
    connect(m_menu.actionRemoveRows, &QAction::triggered, this, &EditCommands::removeRows);
}

void EditCommands::addContextMenus() {
    for (const PortList list : allLists) {
        m_ui.outlineView->addAction(addAction(m_menu, list));
    }
    m_menu.actionRemoveRows->setShortcut(QKeySequence::Delete);
    m_menu.actionRemoveRows->setShortcutContext(Qt::WidgetShortcut); // Delete is for fields too
    for (PortTableView* table : {m_ui.outputTable, m_ui.inputTable, m_ui.stepperTable}) {
        table->addActions({m_menu.actionMoveUp, m_menu.actionMoveDown, m_menu.actionRemoveRows});
    }
}

/// A menu that is open leaves the commands to the table that it was opened for.
void EditCommands::focusChanged(QWidget* now) {
    if (now == nullptr || now->window() != m_ui.centralWidget->window() || qobject_cast<QMenuBar*>(now) != nullptr)
        return;
    m_table = tableAround(now);
    validate();
}

void EditCommands::nameSteps() {
    m_menu.actionUndo->setText("&" + qtText(m_document.setup().undoMenuItemTitle()));
    m_menu.actionUndo->setEnabled(m_document.setup().canUndo());
    m_menu.actionRedo->setText("&" + qtText(m_document.setup().redoMenuItemTitle()));
    m_menu.actionRedo->setEnabled(m_document.setup().canRedo());
}

void EditCommands::validate() {
    nameSteps();
    const std::optional<PortDirection> direction = selectedDirection();
    for (const PortList list : allLists) {
        addAction(m_menu, list)->setEnabled(direction == portDirection(list));
    }
    const bool hasRows = m_table != nullptr && m_table->hasSelection();
    const auto rows = hasRows ? m_document.controller(m_table->portList()).selection() : std::vector<std::size_t>();
    const std::size_t count = hasRows ? m_document.controller(m_table->portList()).arrangedObjects().size() : 0;
    m_menu.actionMoveUp->setEnabled(!rows.empty() && rows.front() > 0);
    m_menu.actionMoveDown->setEnabled(!rows.empty() && rows.back() + 1 < count);
    m_menu.actionRemoveRows->setEnabled(!rows.empty());
}

std::optional<PortDirection> EditCommands::selectedDirection() const {
    const std::vector<const ModelNode*> nodes = m_ui.outlineView->selectedNodes();
    if (nodes.empty()) return std::nullopt;
    const std::optional<PortDirection> first = portDirection(*nodes.front());
    const bool agree = std::ranges::all_of(nodes, [&](const ModelNode* node) { return portDirection(*node) == first; });
    return agree ? first : std::nullopt;
}

void EditCommands::addSelectedPorts(PortList list) {
    std::vector<std::string> paths;
    for (const ModelNode* node : m_ui.outlineView->selectedNodes()) {
        if (auto port = portReference(*node)) paths.push_back(std::move(port->path));
    }
    m_document.setup().addPorts(list, paths);
}

void EditCommands::moveRows(int direction) {
    if (m_table == nullptr) return;
    m_table->setFocus(); // what is typed into a cell belongs to its row
    m_document.setup().moveSelected(m_table->portList(), direction);
}

void EditCommands::removeRows() {
    if (m_table == nullptr || !m_table->hasSelection()) return;
    switch (m_table->portList()) {
    case PortList::Outputs:
        return m_document.addOrRemoveOutput(1);
    case PortList::Initializations:
        return m_document.addOrRemoveInitialization(1);
    case PortList::Steppers:
        return m_document.addOrRemoveStepper(1);
    }
}

void EditCommands::stepBack(bool redo) {
    commitPendingEdit(*m_ui.centralWidget->window());
    guardedPlot(m_document, [&] { redo ? m_document.setup().redo() : m_document.setup().undo(); });
    nameSteps();
}

} // namespace orrery
