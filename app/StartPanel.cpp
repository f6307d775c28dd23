#include "app/StartPanel.h"

#include "app/AppController.h"
#include "app/ApplicationMenu.h"
#include "app/Samples.h"
#include "app/widgets/FileNames.h"
#include "app/widgets/FrontWindow.h"
#include "app/widgets/Icons.h"
#include "app/widgets/Scrollable.h"
#include "app/widgets/WindowLayout.h"
#include "platform/qt/ReadableText.h"
#include "ui_MainMenu.h"
#include "ui_StartPanel.h"

#include <QApplication>
#include <QByteArray>
#include <QCloseEvent>
#include <QIcon>

namespace orrery {

namespace {

constexpr int pathRole = Qt::UserRole; // the path's bytes

/// A window without a document has no use for what acts on one.
void hideDocumentItems(Ui::MainMenu& menu) {
    for (QMenu* each : {menu.menuEdit, menu.menuSetup, menu.menuSimulation, menu.menuView}) {
        each->menuAction()->setVisible(false);
        for (QAction* action : each->actions()) {
            action->setEnabled(false);
        }
    }
    for (QAction* action : {menu.actionSave, menu.actionSaveAs, menu.actionRevert, menu.actionKeepResultsAs}) {
        action->setEnabled(false);
    }
}

} // namespace

StartPanel::StartPanel(AppController& application)
    : m_application(application), m_menu(std::make_unique<Ui::MainMenu>()), m_ui(std::make_unique<Ui::StartPanel>()) {
    m_menu->setupUi(this);
    adaptIconsOfMenus(*this);
    setObjectName("StartPanel");
    auto* content = new QWidget(this);
    m_ui->setupUi(content);
    setCentralWidget(content);
    setWindowTitle(QApplication::applicationDisplayName());
    setAcceptDrops(true); // of files
    m_ui->logo->setPixmap(QApplication::windowIcon().pixmap(96));
    m_ui->version->setText(tr("Version %1").arg(QApplication::applicationVersion()));
    readLabelsByTheirText(*this);
    hideDocumentItems(*m_menu);
    new ApplicationMenu(application, *m_menu, *this);
    connect(m_menu->actionClose, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->newSetup, &QPushButton::clicked, this, [this] { m_application.newDocument(); });
    connect(m_ui->openSetup, &QPushButton::clicked, this, [this] { m_application.openDocument(this); });
    connectList(*m_ui->recentSetups);
    connectList(*m_ui->samples);
    makeScrollable(*content);
    resize(sizeOnScreen({760, 480}));
}

StartPanel::~StartPanel() = default;

void StartPanel::present() {
    fillLists();
    bringToFront(*this);
}

void StartPanel::closeEvent(QCloseEvent* event) {
    event->accept();
    emit closed();
}

void StartPanel::fillLists() {
    m_ui->recentSetups->clear();
    for (const std::string& path : m_application.documentController().recentDocuments().paths()) {
        addSetup(*m_ui->recentSetups, path, shownNameAndFolder(path));
    }
    m_ui->recentSetups->setVisible(m_ui->recentSetups->count() > 0);
    m_ui->noRecentSetups->setVisible(m_ui->recentSetups->count() == 0);
    m_ui->samples->clear();
    for (const std::string& path : sampleSetups()) {
        addSetup(*m_ui->samples, path, shownFileName(path));
    }
    m_ui->samplesPart->setVisible(m_ui->samples->count() > 0);
}

void StartPanel::addSetup(QListWidget& list, const std::string& path, const QString& text) {
    auto* item = new QListWidgetItem(QIcon::fromTheme("text-x-generic"), text, &list);
    item->setData(pathRole, QByteArray::fromStdString(path));
    item->setToolTip(shownPath(path).toHtmlEscaped());
}

/// One click or Return opens.
void StartPanel::connectList(QListWidget& list) {
    const auto open = [this](const QListWidgetItem* item) {
        m_application.openFiles({item->data(pathRole).toByteArray().toStdString()});
    };
    connect(&list, &QListWidget::itemActivated, this, open);
    connect(&list, &QListWidget::itemClicked, this, open);
}

} // namespace orrery
