#pragma once

#include <QDialog>
#include <memory>

QT_BEGIN_NAMESPACE
namespace Ui {
class Preferences;
} // namespace Ui
QT_END_NAMESPACE

namespace orrery {

class AppController;

/// The preferences panel. Choices take effect at once and are kept in the user defaults.
class PreferencesPanel : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesPanel(AppController& application);
    ~PreferencesPanel() override;

    void makeKeyAndOrderFront(); // with everything as it is now

private:
    void refresh();
    void setKeeping();
    void showKeeping();

    AppController& m_application;
    std::unique_ptr<Ui::Preferences> m_ui;
};

} // namespace orrery
