#pragma once

#include "app/DocumentController.h"
#include "app/FileDrops.h"

#include <QObject>
#include <QPointer>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace orrery {

class PageWindow;
class PreferencesPanel;
class StartPanel;

/// The application's delegate, above its documents: what its menus offer without a document, and its end. One, made by
/// main.
class AppController : public QObject {
    Q_OBJECT

public:
    explicit AppController(ApplicationServices& services);
    ~AppController() override;

    [[nodiscard]] DocumentController& documentController() { return m_documents; }
    [[nodiscard]] UserDefaults& defaults() { return m_services.defaults(); }
    [[nodiscard]] const ApplicationServices& services() const { return m_services; }
    void openFiles(const std::vector<std::string>& files);
    /// Another start handed over its files: they open here, and a window comes to the front in any case.
    void reopen(const std::vector<std::string>& files);

    void applicationDidFinishLaunching() {} // nothing is to be done
    void applicationDidBecomeActive();
    /// Never: the application makes no untitled setup by itself.
    [[nodiscard]] static bool applicationShouldOpenUntitledFile() { return false; }

    // -- Commands that need no document; `window` is where a panel belongs ------------------------------------------
    void newDocument() { m_documents.newDocument(); }
    void openDocument(QWidget* window);
    void openResults(QWidget* window);
    void preferences();
    void showReleaseNotes(); // a new window on every call
    void showHelp();
    void showAbout(QWidget* window);
    /// Asks for each document in turn that would lose something, then ends the program; Cancel ends the asking.
    void quit();

    void showStartPanelWhenEmpty();
    /// The active document window, else the one made last, else the start panel.
    [[nodiscard]] QWidget* frontWindow();
    [[nodiscard]] StartPanel& startPanel(); // made when it is first asked for

signals:
    void preferencesChanged();

private:
    void windowMade(DocumentWindow& window);
    void reviewNext();
    void showPage(const QString& title, const QString& page);

    ApplicationServices& m_services;
    DocumentController m_documents;
    FileDrops m_fileDrops;
    std::unique_ptr<StartPanel> m_startPanel; // none while it was not needed
    std::unique_ptr<PreferencesPanel> m_preferences;
    std::vector<QPointer<PageWindow>> m_pages; // closed ones are null
    std::set<DocumentWindow*> m_mayLose;       // agreed to while quitting
    std::unique_ptr<RunLoop::Source> m_activation;
    bool m_isQuitting = false;
};

} // namespace orrery
