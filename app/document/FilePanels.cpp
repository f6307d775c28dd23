#include "app/document/FilePanels.h"

#include "platform/qt/QtText.h"
#include "run/ResultsMark.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <utility>

namespace orrery {

namespace {

using Chosen = std::function<void(const std::vector<std::string>&)>;
using Answered = std::function<void(const std::string&)>;

/// What a panel is for.
struct Kind {
    const char* folderKey; // where the last such file was opened or saved
    const char* suffix;
    QString filter;
};

Kind setups() {
    return {"setupFolder", "orrery", QObject::tr("Setups (*.orrery *.xml)")};
}

Kind results() {
    return {"resultsFolder", resultsFileEnding + 1, QObject::tr("Results of runs (*.nc)")};
}

QString lastFolder(const UserDefaults& defaults, const Kind& kind) {
    const QString folder = qtPath(defaults.stringForKey(kind.folderKey).value_or(""));
    return !folder.isEmpty() && QDir(folder).exists() ? folder : QDir::homePath();
}

QFileDialog* makePanel(QWidget* window, const QString& name, const QString& title, const QStringList& filters) {
    auto* panel = new QFileDialog(window, title); // deletes itself when closed
    panel->setObjectName(name);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setNameFilters(filters + QStringList(QObject::tr("All files (*)")));
    return panel;
}

void noteFolder(UserDefaults& defaults, const Kind& kind, const QString& file) {
    defaults.setObject(corePath(QFileInfo(file).absolutePath()), kind.folderKey);
}

void beginOpenPanel(QFileDialog* panel, UserDefaults& defaults, const Kind& kind, Chosen chosen) {
    panel->setDirectory(lastFolder(defaults, kind));
    panel->setFileMode(QFileDialog::ExistingFiles);
    QObject::connect(panel, &QFileDialog::filesSelected, panel,
                     [&defaults, kind, chosen = std::move(chosen)](const QStringList& files) {
                         std::vector<std::string> paths;
                         for (const QString& file : files) {
                             paths.push_back(corePath(file));
                         }
                         if (paths.empty()) return;
                         noteFolder(defaults, kind, files.front());
                         chosen(paths);
                     });
    panel->open();
}

void beginSavePanel(QFileDialog* panel, UserDefaults& defaults, const Kind& kind, const std::string& suggestion,
                    Answered answered) {
    const QFileInfo suggested(qtPath(suggestion));
    const bool hasFolder = suggestion.find('/') != std::string::npos && suggested.absoluteDir().exists();
    panel->setDirectory(hasFolder ? suggested.absolutePath() : lastFolder(defaults, kind));
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setDefaultSuffix(kind.suffix);
    panel->selectFile(suggested.fileName());
    QObject::connect(panel, &QFileDialog::finished, panel,
                     [panel, &defaults, kind, answered = std::move(answered)](int result) {
                         const QStringList files = panel->selectedFiles();
                         if (result != QDialog::Accepted || files.isEmpty()) {
                             answered("");
                             return;
                         }
                         noteFolder(defaults, kind, files.front());
                         answered(corePath(files.front()));
                     });
    panel->open();
}

} // namespace

void beginOpenSetupPanel(QWidget* window, UserDefaults& defaults, Chosen chosen) {
    beginOpenPanel(makePanel(window, "openSetupPanel", QObject::tr("Open Setup"), {setups().filter, results().filter}),
                   defaults, setups(), std::move(chosen));
}

void beginSaveSetupPanel(QWidget* window, UserDefaults& defaults, const std::string& suggestion, Answered answered) {
    beginSavePanel(makePanel(window, "saveSetupPanel", QObject::tr("Save Setup As"), {setups().filter}), defaults,
                   setups(), suggestion, std::move(answered));
}

void beginOpenResultsPanel(QWidget* window, UserDefaults& defaults, Chosen chosen) {
    beginOpenPanel(makePanel(window, "openResultsPanel", QObject::tr("Open Results"), {results().filter}), defaults,
                   results(), std::move(chosen));
}

void beginSaveResultsPanel(QWidget* window, UserDefaults& defaults, const std::string& suggestion, Answered answered) {
    beginSavePanel(makePanel(window, "saveResultsPanel", QObject::tr("Keep Results As"), {results().filter}), defaults,
                   results(), suggestion, std::move(answered));
}

} // namespace orrery
