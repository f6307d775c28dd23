#include "app/ApplicationMenu.h"

#include "app/AppController.h"
#include "app/widgets/FileNames.h"
#include "ui_MainMenu.h"

namespace orrery {

ApplicationMenu::ApplicationMenu(AppController& application, Ui::MainMenu& menu, QMainWindow& window)
    : QObject(&window), m_application(application), m_menu(menu), m_window(window) {
    connectItems();
    connect(m_menu.menuFile, &QMenu::aboutToShow, this, &ApplicationMenu::listRecentDocuments);
    listRecentDocuments();
}

void ApplicationMenu::connectItems() {
    connect(m_menu.actionNew, &QAction::triggered, this, [this] { m_application.newDocument(); });
    connect(m_menu.actionOpen, &QAction::triggered, this, [this] { m_application.openDocument(&m_window); });
    connect(m_menu.actionOpenResults, &QAction::triggered, this, [this] { m_application.openResults(&m_window); });
    connect(m_menu.actionPreferences, &QAction::triggered, this, [this] { m_application.preferences(); });
    connect(m_menu.actionQuit, &QAction::triggered, this, [this] { m_application.quit(); });
    connect(m_menu.actionHelp, &QAction::triggered, this, [this] { m_application.showHelp(); });
    connect(m_menu.actionReleaseNotes, &QAction::triggered, this, [this] { m_application.showReleaseNotes(); });
    connect(m_menu.actionAbout, &QAction::triggered, this, [this] { m_application.showAbout(&m_window); });
}

void ApplicationMenu::listRecentDocuments() {
    QMenu& recent = *m_menu.menuOpenRecent;
    recent.clear();
    for (const std::string& path : m_application.documentController().recentDocuments().paths()) {
        QAction* item = recent.addAction(shownNameAndFolder(path).replace('&', "&&"));
        connect(item, &QAction::triggered, this, [this, path] { m_application.openFiles({path}); });
    }
    recent.menuAction()->setEnabled(!recent.isEmpty());
    recent.addSeparator();
    QAction* clear = recent.addAction(tr("&Clear Menu"));
    clear->setObjectName("actionClearRecent");
    connect(clear, &QAction::triggered, this, [this] {
        m_application.documentController().recentDocuments().clear();
        m_menu.menuOpenRecent->menuAction()->setEnabled(false);
    });
}

} // namespace orrery
