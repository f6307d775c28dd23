#pragma once

#include "app/ApplicationServices.h"

#include <QObject>
#include <QString>
#include <vector>

namespace orrery {

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

    DocumentWindow* newDocument();
    /// The window of the document at the path, opened when it was not; nullptr when it cannot be, which is told.
    DocumentWindow* openDocument(const QString& path);

private:
    DocumentWindow* show(std::unique_ptr<MyDocument> document);

    ApplicationServices& m_services;
    std::vector<DocumentWindow*> m_windows; // each deletes itself when closed
};

} // namespace orrery
