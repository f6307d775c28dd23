#include "app/document/DocumentWindow.h"

#include "app/document/DocumentFiles.h"
#include "app/document/ResultCommands.h"
#include "app/document/RunPanel.h"
#include "app/document/ShowEdit.h"
#include "app/plot/PlotTab.h"
#include "app/setup/SetupTab.h"
#include "app/widgets/GuardedPlot.h"
#include "app/widgets/Icons.h"
#include "app/widgets/PendingEdit.h"
#include "document/Toolbar.h"
#include "platform/qt/QtText.h"
#include "platform/qt/ReadableText.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QImageReader>
#include <QToolBar>

namespace orrery {

namespace {

/// The image resource by its name's own format: guessing makes readers of other formats complain aloud.
QIcon iconOfResource(const std::string& name) {
    const QString path = ":/" + qtText(name);
    QImageReader reader(path, QFileInfo(path).suffix().toLatin1());
    return QIcon(QPixmap::fromImage(reader.read()));
}

} // namespace

DocumentWindow::DocumentWindow(ApplicationServices& services, std::unique_ptr<MyDocument> document)
    : m_services(services), m_document(std::move(document)), m_menu(std::make_unique<Ui::MainMenu>()),
      m_ui(std::make_unique<Ui::MyDocument>()), m_alerts(this), m_openPanel(this), m_waitPanel(this) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(qtText(MyDocument::windowNibName()));
    m_menu->setupUi(this);
    adaptIconsOfMenus(*this);
    m_ui->setupUi(this);
    readLabelsByTheirText(*this);
    m_openPanel.setWords(tr("Choose a model"), tr("Models"));
    setAcceptDrops(true); // of files
    m_files = std::make_unique<DocumentFiles>(*m_document, *this, m_alerts, m_services.defaults());
    m_setupTab = std::make_unique<SetupTab>(*m_document, *m_ui, *m_menu);
    m_plotTab = std::make_unique<PlotTab>(*m_document, *m_ui, *m_menu, m_services.rasterizer());
    m_runPanel = std::make_unique<RunPanel>(*m_document, *m_ui, *m_menu);
    m_resultCommands = std::make_unique<ResultCommands>(*m_document, *this, m_alerts, m_services);
    connectOutlets();
    makeToolbar();
    connectMenu();
    SetupEditing::Observers& observers = m_document->setup().observers();
    observers.countChanged = [this] { m_files->updateTitle(); };
    observers.setupChanged = [this] {
        m_setupTab->refresh();
        m_files->updateTitle();
        m_resultFiles.watch(m_document->usedFiles());
        validateCommands();
    };
    m_document->setRunObserver([this] {
        m_runPanel->refresh();
        m_plotTab->refresh();
        validateCommands();
    });
    observers.showEdit = [this](const EditPlace& place) { showEdit(*m_document, *m_ui, *m_plotTab, place); };
    connect(&m_resultFiles, &ResultFileWatch::filesChanged, this, &DocumentWindow::lookForFiles);
    m_document->awakeFromNib();
    m_plotTab->setCameraBounds();
    m_setupTab->refresh();
    m_plotTab->refresh();
    m_runPanel->refresh();
    m_files->updateTitle();
    m_resultFiles.watch(m_document->usedFiles());
    validateCommands();
}

DocumentWindow::~DocumentWindow() {
    m_document->close();
    m_document->setOutlets({});
    m_document->setup().observers() = {};
    m_document->setRunObserver({});
}

void DocumentWindow::connectOutlets() {
    DocumentOutlets outlets;
    outlets.alerts = &m_alerts;
    outlets.openPanel = &m_openPanel;
    outlets.waitPanel = &m_waitPanel;
    m_setupTab->addOutlets(outlets);
    m_plotTab->addOutlets(outlets);
    m_runPanel->addOutlets(outlets);
    m_document->setOutlets(outlets);
}

void DocumentWindow::makeToolbar() {
    auto* bar = addToolBar(tr("Toolbar"));
    bar->setObjectName(qtText(toolbarIdentifier));
    bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    for (const std::string& identifier : toolbarItemIdentifiers()) {
        const ToolbarItem item = toolbarItem(identifier);
        QAction* action = bar->addAction(iconOfResource(item.image), qtText(item.label));
        action->setObjectName(qtText("toolbar " + identifier));
        if (item.tag) action->setProperty("tag", static_cast<int>(*item.tag));
        m_taggedActions.push_back(action);
        connect(action, &QAction::triggered, this, [this, run = item.action == ToolbarAction::RunSimulation] {
            run ? runSimulation() : m_document->saveToDorado();
        });
    }
}

void DocumentWindow::runSimulation() {
    commitPendingEdit(*this); // what is being typed belongs to the run
    m_document->runSimulation();
}

void DocumentWindow::connectMenu() {
    m_taggedActions.push_back(m_menu->actionRun);
    m_taggedActions.push_back(m_menu->actionSendToDorado);
    connect(m_menu->menuSimulation, &QMenu::aboutToShow, this, &DocumentWindow::validateCommands);
    connect(m_menu->actionSave, &QAction::triggered, this, [this] { m_files->save([](bool) {}); });
    connect(m_menu->actionSaveAs, &QAction::triggered, this, [this] { m_files->saveAs([](bool) {}); });
    connect(m_menu->actionRevert, &QAction::triggered, this, [this] { m_files->revert(); });
    connect(m_menu->actionClose, &QAction::triggered, this, &QWidget::close);
    connect(m_menu->actionRun, &QAction::triggered, this, &DocumentWindow::runSimulation);
    connect(m_menu->actionKeepResultsAs, &QAction::triggered, m_resultCommands.get(), &ResultCommands::keepAs);
    connect(m_menu->actionShowRuns, &QAction::triggered, m_resultCommands.get(), &ResultCommands::showRuns);
    connect(m_ui->plotLastRun, &QPushButton::clicked, m_resultCommands.get(), &ResultCommands::showLastRun);
    connect(m_resultCommands.get(), &ResultCommands::shown, this, &DocumentWindow::showResults);
    connect(m_resultCommands.get(), &ResultCommands::setupWanted, this, &DocumentWindow::setupWanted);
    connect(m_menu->actionSendToDorado, &QAction::triggered, this, [this] { m_document->saveToDorado(); });
}

/// The start/stop button follows the command that was validated last, so Run comes after Send.
void DocumentWindow::validateCommands() {
    for (const CommandTag command : {CommandTag::Send, CommandTag::Run}) {
        const auto tag = static_cast<int>(command);
        const bool enabled = m_document->validateMenuItem(tag);
        for (QAction* action : m_taggedActions) {
            if (action->property("tag").toInt() == tag) action->setEnabled(enabled);
        }
    }
    m_menu->actionKeepResultsAs->setEnabled(m_document->hasResultsToKeep());
    m_menu->actionShowRuns->setEnabled(!m_services.storeDirectory().empty());
}

void DocumentWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    // Result files come and go while other programs have the screen.
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) lookForFiles();
}

void DocumentWindow::lookForFiles() {
    m_resultFiles.watch(m_document->usedFiles());
    validateCommands();
    m_setupTab->showProblems();
}

void DocumentWindow::showResults() {
    m_ui->tabView->setCurrentWidget(m_ui->plotTab);
    guardedPlot(*m_document, [this] { m_document->setupPlotView(); });
    m_plotTab->refresh();
}

void DocumentWindow::closeUnasked() {
    m_closesUnasked = true;
    close();
}

void DocumentWindow::closeEvent(QCloseEvent* event) {
    commitPendingEdit(*this);
    if (m_closesUnasked || m_files->mayCloseUnasked()) {
        event->accept();
        emit closed();
        return;
    }
    event->ignore();
    m_files->askBeforeClosing([this](bool mayClose) {
        if (mayClose) closeUnasked();
    });
}

} // namespace orrery
