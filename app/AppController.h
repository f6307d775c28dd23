#pragma once

#include "app/DocumentController.h"

#include <QObject>
#include <QStringList>

namespace orrery {

/// The application's delegate, above its documents. One, made by main.
class AppController : public QObject {
    Q_OBJECT

public:
    explicit AppController(ApplicationServices& services);

    [[nodiscard]] DocumentController& documentController() { return m_documents; }
    /// The program was started (or asked by another start) to open these files.
    void openFiles(const QStringList& files);

    void applicationDidFinishLaunching() {} // nothing is to be done
    void applicationDidBecomeActive();
    /// Never: the application makes no untitled setup by itself.
    [[nodiscard]] static bool applicationShouldOpenUntitledFile() { return false; }

private:
    DocumentController m_documents;
};

} // namespace orrery
