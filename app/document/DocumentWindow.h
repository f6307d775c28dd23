#pragma once

#include "app/document/ApplicationServices.h"
#include "app/document/ResultFileWatch.h"
#include "app/widgets/InterfaceDescriptions.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtOpenPanel.h"
#include "platform/qt/QtWaitPanel.h"

#include <QMainWindow>
#include <memory>
#include <string>
#include <vector>

namespace orrery {

class DocumentFiles;
class PlotTab;
class ResultCommands;
class RunPanel;
class SetupTab;

/// The window of one setup document. It owns the document, the controls of the interface description, and the parts
/// that tie them to the document.
class DocumentWindow : public QMainWindow {
    Q_OBJECT

public:
    DocumentWindow(ApplicationServices& services, std::unique_ptr<MyDocument> document);
    ~DocumentWindow() override;

    [[nodiscard]] MyDocument& document() { return *m_document; }
    [[nodiscard]] DocumentFiles& files() { return *m_files; }
    [[nodiscard]] QtAlerts& alerts() { return m_alerts; }
    [[nodiscard]] Ui::MainMenu& menu() { return *m_menu; }
    void showResults();  // draws those that there are, in front
    void closeUnasked(); // ends a run and loses what was not saved

signals:
    void setupWanted(const std::string& resultsPath); // that of a run that was kept, as a document of its own
    void closed();                                    // once; the window is deleted later

protected:
    void closeEvent(QCloseEvent* event) override; // asks first when something would be lost
    void changeEvent(QEvent* event) override;

private:
    void makeToolbar();
    void connectOutlets();
    void connectMenu();
    void runSimulation();
    void validateCommands();
    void lookForFiles();

    ApplicationServices& m_services;
    std::unique_ptr<MyDocument> m_document;
    std::unique_ptr<Ui::MainMenu> m_menu;
    std::unique_ptr<Ui::MyDocument> m_ui;
    QtAlerts m_alerts;
    QtOpenPanel m_openPanel;
    QtWaitPanel m_waitPanel;
    std::unique_ptr<DocumentFiles> m_files;
    std::unique_ptr<SetupTab> m_setupTab;
    std::unique_ptr<PlotTab> m_plotTab;
    std::unique_ptr<RunPanel> m_runPanel;
    std::unique_ptr<ResultCommands> m_resultCommands;
    ResultFileWatch m_resultFiles;
    std::vector<QAction*> m_taggedActions; // follow the enabling rule of their tag
    bool m_closesUnasked = false;
};

} // namespace orrery
