#include "app/AppController.h"

#include <QApplication>

namespace orrery {

AppController::AppController(ApplicationServices& services) : m_documents(services) {
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) applicationDidBecomeActive();
    });
}

void AppController::openFiles(const QStringList& files) {
    for (const QString& file : files) {
        m_documents.openDocument(file);
    }
}

void AppController::applicationDidBecomeActive() {
    orrery::applicationDidBecomeActive(m_documents.documents());
}

} // namespace orrery
