#include "app/DocumentController.h"

#include "app/OpenReport.h"
#include "app/Samples.h"
#include "app/document/DocumentFiles.h"
#include "app/document/DocumentWindow.h"
#include "app/widgets/FileNames.h"
#include "app/widgets/FrontWindow.h"
#include "app/widgets/WindowLayout.h"
#include "platform/Files.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtText.h"
#include "run/ResultsMark.h"

#include <QApplication>
#include <QMainWindow>
#include <algorithm>
#include <exception>

namespace orrery {

namespace {

QString nameWithoutSuffix(const std::string& path) {
    const QString name = shownFileName(path);
    return name.left(name.lastIndexOf('.'));
}

} // namespace

DocumentController::DocumentController(ApplicationServices& services)
    : m_services(services), m_recent(services.defaults()) {}

DocumentController::~DocumentController() {
    for (auto* list : {&m_windows, &m_closed}) {
        while (!list->empty()) {
            delete list->back();
        }
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
    return show(std::move(document), tr("Untitled"));
}

DocumentWindow* DocumentController::openDocument(const QString& path) {
    return openDocument(corePath(path));
}

DocumentWindow* DocumentController::openDocument(const std::string& path) {
    OpenReport report;
    DocumentWindow* window = open(path, report);
    tellOf(report, windowForMessages());
    return window;
}

void DocumentController::openDocuments(const std::vector<std::string>& paths) {
    OpenReport report;
    const std::size_t before = m_windows.size();
    for (std::size_t i = 0; i < paths.size() && report.leftOut == 0; ++i) {
        if (m_windows.size() < before + OpenReport::mostWindows) {
            open(paths[i], report);
        } else {
            report.leftOut = paths.size() - i;
        }
    }
    tellOf(report, m_windows.size() > before ? m_windows.back() : windowForMessages());
}

void DocumentController::tellOf(const OpenReport& report, QWidget* window) {
    if (const auto alert = report.alert()) QtAlerts(window).beginSheet(*alert, {});
}

DocumentWindow* DocumentController::open(const std::string& path, OpenReport& report) {
    if (DocumentWindow* window = windowOf(path)) {
        bringToFront(*window);
        return window;
    }
    const std::string absolute = absolutePath(path);
    if (isSampleSetup(absolute)) return openCopy(absolute, report);
    if (looksLikeResultsFile(absolute) || absolute.ends_with(resultsFileEnding)) return openResults(absolute, report);
    auto document = std::make_unique<MyDocument>(m_services.forDocuments());
    if (!read(absolute, report, [&] { document->readFromFile(absolute); })) return nullptr;
    m_recent.note(absolute);
    DocumentWindow* window = show(std::move(document), tr("Untitled"));
    window->files().tellOfFile();
    return window;
}

DocumentWindow* DocumentController::openResults(const std::string& path, OpenReport& report) {
    if (DocumentWindow* window = windowOfResults(path)) {
        bringToFront(*window);
        return window;
    }
    auto document = std::make_unique<MyDocument>(m_services.forDocuments());
    if (!read(path, report, [&] { document->openRun(path); })) return nullptr;
    DocumentWindow* window = show(std::move(document), nameWithoutSuffix(path));
    window->showResults();
    return window;
}

DocumentWindow* DocumentController::openSetupOf(const std::string& resultsPath) {
    OpenReport report;
    auto document = std::make_unique<MyDocument>(m_services.forDocuments());
    DocumentWindow* window = nullptr;
    if (read(resultsPath, report, [&] { document->openSetupOf(resultsPath); }))
        window = show(std::move(document), tr("Setup of %1").arg(nameWithoutSuffix(resultsPath)));
    tellOf(report, windowForMessages());
    return window;
}

DocumentWindow* DocumentController::openCopy(const std::string& path, OpenReport& report) {
    auto document = std::make_unique<MyDocument>(m_services.forDocuments());
    if (!read(path, report, [&] { document->file().readCopyOf(path); })) return nullptr;
    return show(std::move(document), tr("%1 copy").arg(nameWithoutSuffix(path)));
}

bool DocumentController::read(const std::string& path, OpenReport& report, const std::function<void()>& reading) {
    try {
        reading();
    } catch (const std::exception& failure) {
        report.failures.push_back({coreText(shownFileName(path)), failure.what()});
        return false;
    }
    return true;
}

/// The main window in front. A panel may be, but is about to close and would take the message with it.
QWidget* DocumentController::windowForMessages() const {
    for (QWidget* window = QApplication::activeWindow(); window != nullptr; window = window->parentWidget()) {
        if (qobject_cast<QMainWindow*>(window) != nullptr) return window;
    }
    return m_windows.empty() ? nullptr : m_windows.back();
}

void DocumentController::closeAll() {
    for (DocumentWindow* window : std::vector(m_windows)) {
        window->closeUnasked();
    }
}

DocumentWindow* DocumentController::show(std::unique_ptr<MyDocument> document, const QString& untitledName) {
    const int number = freeUntitledNumber(untitledName);
    auto* window = new DocumentWindow(m_services, std::move(document));
    window->files().setUntitledName(untitledName, number);
    window->files().setOpenElsewhere([this, window](const std::string& path) {
        DocumentWindow* other = windowOf(path);
        return other != nullptr && other != window;
    });
    m_windows.push_back(window);
    connect(&window->files(), &DocumentFiles::saved, this, [this, window] { documentSaved(*window); });
    connect(window, &DocumentWindow::setupWanted, this, [this](const std::string& results) { openSetupOf(results); });
    connect(window, &DocumentWindow::closed, this, [this, window] { documentClosed(*window); });
    connect(window, &QObject::destroyed, this, [this, window] {
        std::erase(m_windows, window);
        std::erase(m_closed, window);
    });
    updateTitles();
    restoreWindowLayout(*window, m_services.defaults());
    emit windowMade(window);
    window->show();
    bringToFront(*window);
    return window;
}

DocumentWindow* DocumentController::windowOf(const std::string& path) const {
    const auto found = std::ranges::find_if(m_windows, [&](DocumentWindow* window) {
        const auto its = window->document().file().path();
        return its && isSameFile(*its, path);
    });
    return found == m_windows.end() ? nullptr : *found;
}

/// The window that was opened for the results file alone.
DocumentWindow* DocumentController::windowOfResults(const std::string& path) const {
    const auto found = std::ranges::find_if(m_windows, [&](DocumentWindow* window) {
        const std::string& shown = window->document().keeping().path();
        return !window->document().file().path() && !shown.empty() && isSameFile(shown, path);
    });
    return found == m_windows.end() ? nullptr : *found;
}

/// The smallest number that no open untitled document of that name has.
int DocumentController::freeUntitledNumber(const QString& untitledName) const {
    const auto has = [&](DocumentWindow* window, int number) {
        return window->files().untitledName() == untitledName && window->files().untitledNumber() == number;
    };
    for (int number = 1;; ++number) {
        if (std::ranges::none_of(m_windows, [&](auto* window) { return has(window, number); })) return number;
    }
}

void DocumentController::documentSaved(DocumentWindow& window) {
    if (const auto path = window.document().file().path()) m_recent.note(*path);
    updateTitles();
}

void DocumentController::documentClosed(DocumentWindow& window) {
    keepWindowLayout(window, m_services.defaults());
    window.document().file().known() = {}; // opened again at once, it is open nowhere else
    std::erase(m_windows, &window);
    m_closed.push_back(&window);
    updateTitles();
    emit windowClosed();
}

void DocumentController::updateTitles() {
    for (DocumentWindow* window : m_windows) {
        const bool isNamedTwice = std::ranges::any_of(m_windows, [&](DocumentWindow* other) {
            return other != window && other->files().displayName() == window->files().displayName();
        });
        window->files().setTitleShowsFolder(isNamedTwice);
    }
}

} // namespace orrery
