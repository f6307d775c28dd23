#pragma once

#include "app/widgets/InterfaceDescriptions.h"
#include "document/MyDocument.h"

#include <QObject>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class QLineEdit;

namespace orrery {

class EditCommands;
class PortTableView;

/// The setup tab and the model outline: settings, the three tables, and what ties them to the document.
class SetupTab : public QObject {
    Q_OBJECT

public:
    SetupTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu);
    ~SetupTab() override;
    void addOutlets(DocumentOutlets& outlets);
    void refresh();      // the setup or the model changed
    void showProblems(); // files that the setup names may have come or gone

private:
    struct Setting {
        std::string_view key;
        QLineEdit* field;
    };

    void layOut();
    void connectSettings();
    void connectTables();
    void commit(const Setting& setting);
    void showSettings();
    void showModelPath();
    void showSweep();
    void mend(const SetupProblem& problem, const std::string& value);

    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    std::unique_ptr<ListView> m_outline; // the outline, and what else depends on the model
    std::vector<Setting> m_settings;
    std::unique_ptr<EditCommands> m_commands;
};

} // namespace orrery
