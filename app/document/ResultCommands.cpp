#include "app/document/ResultCommands.h"

#include "app/document/FilePanels.h"
#include "app/document/RunsPanel.h"
#include "app/widgets/FileNames.h"
#include "app/widgets/FrontWindow.h"
#include "platform/Files.h"
#include "platform/qt/QtText.h"
#include "run/ResultsMark.h"

#include <exception>
#include <filesystem>

namespace orrery {

void ResultCommands::keepAs() {
    beginSaveResultsPanel(&m_window, m_services.defaults(), suggestedName(), [this](const std::string& path) {
        if (!path.empty()) writeTo(path);
    });
}

/// "crop 2026-11-26.nc": what ran, and when.
std::string ResultCommands::suggestedName() const {
    const RunRecord& record = m_document.keeping().record();
    const std::string setup = std::filesystem::path(record.setup.path).stem().string();
    return (setup.empty() ? "Results" : setup) + " " + record.started.substr(0, record.started.find(' ')) +
           resultsFileEnding;
}

void ResultCommands::writeTo(const std::string& path) {
    try {
        (void)m_document.keepResultsAs(path);
    } catch (const std::exception& failure) {
        m_alerts.beginSheet(
            {coreText(tr("The results could not be kept as “%1”.").arg(shownFileName(path))), failure.what()}, {});
    }
}

void ResultCommands::showRuns() {
    if (!m_runs) {
        m_runs = new RunsPanel(m_services.storeDirectory(), m_window); // deletes itself when closed
        connect(m_runs, &RunsPanel::showWanted, this, &ResultCommands::show);
        connect(m_runs, &RunsPanel::setupWanted, this, &ResultCommands::setupWanted);
    }
    m_runs->list(m_document.file().path() ? m_document.file().absolutePath() : "");
    bringToFront(*m_runs);
}

void ResultCommands::showLastRun() {
    if (m_document.keeping().lastRun()) show(m_document.keeping().lastRun()->path);
}

void ResultCommands::show(const std::string& resultsPath) {
    try {
        m_document.openResults(resultsPath);
    } catch (const std::exception& failure) {
        m_alerts.beginSheet({coreText(tr("“%1” could not be opened.").arg(shownFileName(resultsPath))), failure.what()},
                            {});
        return;
    }
    emit shown();
}

} // namespace orrery
