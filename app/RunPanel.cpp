#include "app/RunPanel.h"

#include "platform/qt/LogView.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

namespace orrery {

RunPanel::RunPanel(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu)
    : m_document(document), m_ui(ui), m_menu(menu), m_button(ui.startStopButton), m_wheel(ui.progressWheel) {
    connect(ui.startStopButton, &QPushButton::clicked, this, [this] { m_document.simulationStartOrAbort(); });
    connect(menu.actionAbort, &QAction::triggered, this, [this] { m_document.abortSimulation(); });
    connect(menu.actionFindInLog, &QAction::triggered, this, [this] { m_ui.log->showFind(); });
}

void RunPanel::addOutlets(DocumentOutlets& outlets) {
    outlets.startStopButton = &m_button;
    outlets.progressWheel = &m_wheel;
    outlets.statusView = &m_ui.log->view();
}

void RunPanel::refresh() {
    const RunControl::State state = m_document.runControl().state();
    m_menu.actionAbort->setEnabled(state != RunControl::State::Idle);
    m_ui.startStopButton->setText(state == RunControl::State::Idle ? tr("Start") : tr("Stop"));
    m_ui.runState->setText(state == RunControl::State::Waiting   ? tr("Waiting for another run to end")
                           : state == RunControl::State::Ending  ? tr("Ending the earlier run")
                           : state == RunControl::State::Running ? tr("Running")
                                                                 : QString());
}

} // namespace orrery
