#include "app/AppController.h"

#include "app/AboutBox.h"
#include "app/ApplicationMenu.h"
#include "app/LogFont.h"
#include "app/PageWindow.h"
#include "app/PreferencesPanel.h"
#include "app/StartPanel.h"
#include "app/document/DocumentFiles.h"
#include "app/document/DocumentWindow.h"
#include "app/document/FilePanels.h"
#include "app/widgets/FrontWindow.h"
#include "app/widgets/PendingEdit.h"

#include <QApplication>

namespace orrery {

AppController::AppController(ApplicationServices& services)
    : m_services(services), m_documents(services),
      m_fileDrops([this](const std::vector<std::string>& files) { openFiles(files); }) {
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive) return;
        // By the run loop, which rests while a document waits for a calculation: nothing else may come in then.
        m_activation = m_services.runLoop().after({}, [this] { applicationDidBecomeActive(); });
    });
    connect(&m_documents, &DocumentController::windowMade, this, [this](DocumentWindow* w) { windowMade(*w); });
    connect(&m_documents, &DocumentController::windowClosed, this, &AppController::showStartPanelWhenEmpty);
}

AppController::~AppController() {
    for (const QPointer<PageWindow>& page : m_pages) {
        delete page;
    }
}

void AppController::openFiles(const std::vector<std::string>& files) {
    m_documents.openDocuments(files);
}

void AppController::reopen(const std::vector<std::string>& files) {
    showStartPanelWhenEmpty();
    bringToFront(*frontWindow());
    openFiles(files);
}

StartPanel& AppController::startPanel() {
    if (!m_startPanel) {
        m_startPanel = std::make_unique<StartPanel>(*this);
        connect(m_startPanel.get(), &StartPanel::closed, this, &AppController::quit);
    }
    return *m_startPanel;
}

QWidget* AppController::frontWindow() {
    if (m_documents.windows().empty()) return &startPanel();
    for (DocumentWindow* window : m_documents.windows()) {
        if (window->isActiveWindow()) return window;
    }
    return m_documents.windows().back();
}

void AppController::applicationDidBecomeActive() {
    orrery::applicationDidBecomeActive(m_documents.documents());
}

void AppController::windowMade(DocumentWindow& window) {
    new ApplicationMenu(*this, window.menu(), window); // the window's child
    if (m_startPanel) m_startPanel->hide();
    if (auto* log = window.findChild<QWidget*>("statusView")) {
        applyLogFontSize(*log, defaults());
        connect(this, &AppController::preferencesChanged, log, [this, log] { applyLogFontSize(*log, defaults()); });
    }
}

void AppController::showStartPanelWhenEmpty() {
    if (!m_isQuitting && m_documents.windows().empty()) startPanel().present();
}

void AppController::openDocument(QWidget* window) {
    beginOpenSetupPanel(window, defaults(), [this](const std::vector<std::string>& paths) { openFiles(paths); });
}

void AppController::openResults(QWidget* window) {
    beginOpenResultsPanel(window, defaults(), [this](const std::vector<std::string>& paths) { openFiles(paths); });
}

void AppController::preferences() {
    if (!m_preferences) m_preferences = std::make_unique<PreferencesPanel>(*this);
    m_preferences->makeKeyAndOrderFront();
}

void AppController::showReleaseNotes() {
    showPage(tr("Release Notes"), "orreryreleasenotes.html");
}

void AppController::showHelp() {
    showPage(tr("Orrery Help"), "help.html");
}

void AppController::showPage(const QString& title, const QString& page) {
    std::erase(m_pages, nullptr);
    m_pages.emplace_back(new PageWindow(title, QUrl("qrc:/" + page)));
    bringToFront(*m_pages.back());
}

void AppController::showAbout(QWidget* window) {
    beginAboutBox(window);
}

void AppController::quit() {
    if (m_isQuitting) return;
    m_isQuitting = true;
    m_mayLose.clear();
    reviewNext();
}

/// From the first window again after each answer, since a document may be edited while another one is asked about.
void AppController::reviewNext() {
    for (DocumentWindow* window : m_documents.windows()) {
        commitPendingEdit(*window);
        if (m_mayLose.contains(window) || window->files().mayCloseUnasked()) continue;
        bringToFront(*window);
        window->files().askBeforeClosing([this, window](bool mayClose) {
            m_isQuitting = mayClose;
            if (!mayClose) return;
            if (!window->files().mayCloseUnasked()) m_mayLose.insert(window);
            reviewNext();
        });
        return;
    }
    m_documents.closeAll();
    QCoreApplication::exit(0);
}

} // namespace orrery
