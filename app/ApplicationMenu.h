#pragma once

#include "app/widgets/InterfaceDescriptions.h"

#include <QMainWindow>
#include <QObject>

namespace orrery {

class AppController;

/// Ties a window's menu items that need no document (New, Open, Help and so on) to the application. The window's child.
class ApplicationMenu : public QObject {
    Q_OBJECT

public:
    ApplicationMenu(AppController& application, Ui::MainMenu& menu, QMainWindow& window);

private:
    void connectItems();
    void listRecentDocuments();

    AppController& m_application;
    Ui::MainMenu& m_menu;
    QMainWindow& m_window;
};

} // namespace orrery
