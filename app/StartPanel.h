#pragma once

#include <QMainWindow>
#include <memory>
#include <string>

class QListWidget;

QT_BEGIN_NAMESPACE
namespace Ui {
class MainMenu;
class StartPanel;
} // namespace Ui
QT_END_NAMESPACE

namespace orrery {

class AppController;

/// What is on the screen while no document is: New, Open, the recent setups and the samples. No document itself.
class StartPanel : public QMainWindow {
    Q_OBJECT

public:
    explicit StartPanel(AppController& application);
    ~StartPanel() override;

    void present(); // with the lists as they are now, in front

signals:
    void closed(); // by the user

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void fillLists();
    void addSetup(QListWidget& list, const std::string& path, const QString& text);
    void connectList(QListWidget& list);

    AppController& m_application;
    std::unique_ptr<Ui::MainMenu> m_menu;
    std::unique_ptr<Ui::StartPanel> m_ui;
};

} // namespace orrery
