#include "app/DocumentController.h"

#include "app/DocumentWindow.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtText.h"

#include <algorithm>
#include <exception>

namespace orrery {

DocumentController::DocumentController(ApplicationServices& services) : m_services(services) {}

DocumentController::~DocumentController() {
    while (!m_windows.empty()) {
        delete m_windows.back();
    }
}

std::vector<MyDocument*> DocumentController::documents() const {
    std::vector<MyDocument*> all;
    for (DocumentWindow* window : m_windows) {
        all.push_back(&window->document());
    }
    return all;
}

DocumentWindow* DocumentController::newDocument() {
    auto document = std::make_unique<MyDocument>(m_services.forDocuments());
    document->initWithType("");
    return show(std::move(document));
}

DocumentWindow* DocumentController::openDocument(const QString& path) {
    auto document = std::make_unique<MyDocument>(m_services.forDocuments());
    try {
        document->readFromFile(corePath(path));
    } catch (const std::exception& failure) {
        (void)QtAlerts(nullptr).runModal({"The document could not be opened.", failure.what()});
        return nullptr;
    }
    return show(std::move(document));
}

DocumentWindow* DocumentController::show(std::unique_ptr<MyDocument> document) {
    auto* window = new DocumentWindow(m_services, std::move(document));
    m_windows.push_back(window);
    connect(window, &QObject::destroyed, this, [this, window] { std::erase(m_windows, window); });
    window->show();
    return window;
}

} // namespace orrery
