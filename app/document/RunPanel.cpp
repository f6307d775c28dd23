#include "app/document/RunPanel.h"

#include "app/plot/RunStateWords.h"
#include "log/qt/LogView.h"
#include "platform/qt/QtText.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

#include <QStyle>
#include <QTabWidget>
#include <chrono>

namespace orrery {

RunPanel::RunPanel(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu)
    : m_document(document), m_ui(ui), m_menu(menu), m_button(ui.startStopButton), m_wheel(ui.progressWheel) {
    ui.log->view().setAccessibleName(tr("Engine output"));
    connect(ui.startStopButton, &QPushButton::clicked, this, [this] { m_document.simulationStartOrAbort(); });
    connect(menu.actionAbort, &QAction::triggered, this, [this] { m_document.abortSimulation(); });
    m_aging.setInterval(std::chrono::seconds(20));
    connect(&m_aging, &QTimer::timeout, this, &RunPanel::showState);
    connect(menu.actionFindInLog, &QAction::triggered, this, [this] { m_ui.log->showFind(); });
    if (const std::string& fault = document.runControl().fault(); !fault.empty()) {
        ui.log->view().setString(fault);
        for (QWidget* each : {static_cast<QWidget*>(ui.startStopButton), static_cast<QWidget*>(ui.runState)})
            each->setToolTip(qtText(fault).toHtmlEscaped());
    }
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
    showState();
    m_document.runControl().outcome().staleSince ? m_aging.start() : m_aging.stop();
}

void RunPanel::showState() {
    const RunControl& run = m_document.runControl();
    const QString text = m_document.runControl().fault().empty() ? runStateText(run) : tr("Cannot run: see the log");
    m_ui.runState->setText(text);
    const int tab = m_ui.tabView->indexOf(m_ui.plotTab);
    m_ui.tabView->setTabIcon(tab, runStateIcon(run, *m_ui.tabView->style()));
    m_ui.tabView->setTabToolTip(tab, text);
}

} // namespace orrery
