#pragma once

#include "app/RecentDocuments.h"
#include "app/document/ApplicationServices.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace orrery {

struct OpenReport;

class DocumentWindow;

/// Makes, opens and closes the setup documents with their windows.
class DocumentController : public QObject {
    Q_OBJECT

public:
    explicit DocumentController(ApplicationServices& services);
    ~DocumentController() override;

    /// In the order in which they were made.
    [[nodiscard]] std::vector<MyDocument*> documents() const;
    [[nodiscard]] const std::vector<DocumentWindow*>& windows() const { return m_windows; }
    [[nodiscard]] RecentDocuments& recentDocuments() { return m_recent; }

    DocumentWindow* newDocument();
    /// The window of the document at the path, opened when it was not, and brought to the front; nullptr when it
    /// cannot be opened, which is reported. A sample opens as an untitled copy, a new one each time; a results file
    /// as an untitled copy of the setup that ran, with its results in front.
    DocumentWindow* openDocument(const std::string& path);
    DocumentWindow* openDocument(const QString& path);
    /// A new, untitled document with the setup of a run that was kept; null as openDocument.
    DocumentWindow* openSetupOf(const std::string& resultsPath);
    /// The same for all of them, up to as many windows as one go may open. One message tells what was not opened.
    void openDocuments(const std::vector<std::string>& paths);
    void closeAll(); // without asking

signals:
    void windowMade(orrery::DocumentWindow* window); // before it is shown
    void windowClosed();

private:
    /// These return null for a failure, which the report has then.
    DocumentWindow* open(const std::string& path, OpenReport& report);
    DocumentWindow* openResults(const std::string& path, OpenReport& report);
    DocumentWindow* openCopy(const std::string& path, OpenReport& report);
    static bool read(const std::string& path, OpenReport& report, const std::function<void()>& reading);
    static void tellOf(const OpenReport& report, QWidget* window);
    DocumentWindow* show(std::unique_ptr<MyDocument> document, const QString& untitledName);
    [[nodiscard]] DocumentWindow* windowOf(const std::string& path) const;
    [[nodiscard]] DocumentWindow* windowOfResults(const std::string& path) const;
    [[nodiscard]] QWidget* windowForMessages() const;
    [[nodiscard]] int freeUntitledNumber(const QString& untitledName) const;
    void documentSaved(DocumentWindow& window);
    void documentClosed(DocumentWindow& window);
    void updateTitles();

    ApplicationServices& m_services;
    RecentDocuments m_recent;
    std::vector<DocumentWindow*> m_windows; // open ones
    std::vector<DocumentWindow*> m_closed;  // go when the event that closed them is over
};

} // namespace orrery
