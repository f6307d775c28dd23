#pragma once

#include "run/results/RunStore.h"

#include <QDialog>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

QT_BEGIN_NAMESPACE
class QTableWidgetItem;
namespace Ui {
class Runs;
} // namespace Ui
QT_END_NAMESPACE

namespace orrery {

/// The runs that were kept, of a window's setup or of all of them, newest first. Deletes itself when closed.
class RunsPanel : public QDialog {
    Q_OBJECT

public:
    RunsPanel(const std::string& storeDirectory, QWidget& window);
    ~RunsPanel() override;

    /// Lists them as they are now. @param setupPath the window's setup; empty: it has no file
    void list(const std::string& setupPath);

signals:
    void showWanted(const std::string& resultsPath);
    void setupWanted(const std::string& resultsPath);

private:
    void connectControls();
    void refresh();
    void fillRow(int row);
    void edit(const QTableWidgetItem& item);
    void removeChosen();
    [[nodiscard]] const KeptRunInfo* chosen() const;
    void enableButtons();
    void refreshOrTell();
    /// What it throws is told under that heading; false then.
    bool guarded(const char* failed, const std::function<void()>& act);

    RunStore m_store;
    std::string m_setupPath;
    std::vector<KeptRunInfo> m_runs;                   // a row each
    std::vector<std::optional<std::string>> m_changes; // of each since the run before
    std::unique_ptr<Ui::Runs> m_ui;
};

} // namespace orrery
