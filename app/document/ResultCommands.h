#pragma once

#include "app/document/ApplicationServices.h"
#include "document/MyDocument.h"
#include "platform/qt/QtAlerts.h"

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <string>

namespace orrery {

class RunsPanel;

/// What a window offers for runs that are kept: its own results as a file, the list of runs, the last one again. Owned
/// by the window.
class ResultCommands : public QObject {
    Q_OBJECT

public:
    /// All of it outlives this.
    ResultCommands(MyDocument& document, QWidget& window, QtAlerts& alerts, ApplicationServices& services)
        : m_document(document), m_window(window), m_alerts(alerts), m_services(services) {}

    void keepAs(); // asks where
    void showRuns();
    void showLastRun(); // of this setup, if one was kept
    void show(const std::string& resultsPath);

signals:
    void shown();                                     // the document's results are those of a file now
    void setupWanted(const std::string& resultsPath); // as a document of its own

private:
    void writeTo(const std::string& path);
    [[nodiscard]] std::string suggestedName() const;

    MyDocument& m_document;
    QWidget& m_window;
    QtAlerts& m_alerts;
    ApplicationServices& m_services;
    QPointer<RunsPanel> m_runs;
};

} // namespace orrery
