#include "app/document/FilePanels.h"

#include "platform/qt/QtText.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <utility>

namespace orrery {

namespace {

constexpr const char* folderKey = "setupFolder"; // where the last setup was opened or saved

QString lastFolder(const UserDefaults& defaults) {
    const QString folder = qtPath(defaults.stringForKey(folderKey).value_or(""));
    return !folder.isEmpty() && QDir(folder).exists() ? folder : QDir::homePath();
}

QFileDialog* makePanel(QWidget* window, const QString& name, const QString& title, const QString& folder) {
    auto* panel = new QFileDialog(window, title, folder); // deletes itself when closed
    panel->setObjectName(name);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setNameFilters({QObject::tr("Setups (*.orrery *.xml)"), QObject::tr("All files (*)")});
    return panel;
}

void noteFolder(UserDefaults& defaults, const QString& file) {
    defaults.setObject(corePath(QFileInfo(file).absolutePath()), folderKey);
}

} // namespace

void beginOpenSetupPanel(QWidget* window, UserDefaults& defaults,
                         std::function<void(const std::vector<std::string>&)> chosen) {
    QFileDialog* panel = makePanel(window, "openSetupPanel", QObject::tr("Open Setup"), lastFolder(defaults));
    panel->setFileMode(QFileDialog::ExistingFiles);
    QObject::connect(panel, &QFileDialog::filesSelected, panel,
                     [&defaults, chosen = std::move(chosen)](const QStringList& files) {
                         std::vector<std::string> paths;
                         for (const QString& file : files) {
                             paths.push_back(corePath(file));
                         }
                         if (paths.empty()) return;
                         noteFolder(defaults, files.front());
                         chosen(paths);
                     });
    panel->open();
}

void beginSaveSetupPanel(QWidget* window, UserDefaults& defaults, const std::string& suggestion,
                         std::function<void(const std::string&)> answered) {
    const QFileInfo suggested(qtPath(suggestion));
    const bool hasFolder = suggestion.find('/') != std::string::npos && suggested.absoluteDir().exists();
    QFileDialog* panel = makePanel(window, "saveSetupPanel", QObject::tr("Save Setup As"),
                                   hasFolder ? suggested.absolutePath() : lastFolder(defaults));
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setDefaultSuffix("orrery");
    panel->selectFile(suggested.fileName());
    QObject::connect(panel, &QFileDialog::finished, panel,
                     [panel, &defaults, answered = std::move(answered)](int result) {
                         const QStringList files = panel->selectedFiles();
                         if (result != QDialog::Accepted || files.isEmpty()) {
                             answered("");
                             return;
                         }
                         noteFolder(defaults, files.front());
                         answered(corePath(files.front()));
                     });
    panel->open();
}

} // namespace orrery
