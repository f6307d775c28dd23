#include "app/AppController.h"
#include "app/GuardedApplication.h"
#include "app/LaunchOptions.h"
#include "app/SingleInstance.h"
#include "app/WindowPicture.h"
#include "platform/Log.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtGlSurface.h"
#include "platform/qt/TerminationSignals.h"
#include "plot/BasicOpenGLView.h"
#include "run/results/RunStore.h"

#include <unistd.h>

#include <array>
#include <clocale>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>

namespace orrery {
namespace {

/// Without a display Qt would end the program with a signal and advice for developers.
void tellOfNoDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*message*/) {
    if (type != QtFatalMsg) return;
    std::cerr << "orrery: no display can be reached. Start it in a desktop session, or use orrery-batch without one."
              << std::endl;
    _exit(1);
}

/// The application object keeps references to what it is given, and reads none of the program's arguments.
std::unique_ptr<GuardedApplication> makeApplication() {
    static std::array<char, 7> name{"orrery"};
    static std::array<char*, 2> arguments{name.data(), nullptr};
    static int count = 1;
    QtGlSurface::setApplicationFormat(BasicOpenGLView::basicPixelFormat());
    const QtMessageHandler before = qInstallMessageHandler(tellOfNoDisplay);
    auto application = std::make_unique<GuardedApplication>(count, arguments.data());
    qInstallMessageHandler(before);
    std::setlocale(LC_NUMERIC, "C"); // numbers are read and printed alike everywhere
    QApplication::setApplicationName("orrery");
    QApplication::setApplicationDisplayName("Orrery");
    QApplication::setApplicationVersion(ORRERY_VERSION);
    QApplication::setDesktopFileName("orrery");
    QApplication::setQuitOnLastWindowClosed(false); // the controller knows when nothing is left to do
    return application;
}

void pictureAndEnd(AppController& controller, const std::string& path) {
    takeWindowPicture(*controller.frontWindow(), path, [](const std::string& failure) {
        if (!failure.empty()) std::cerr << "orrery: " << failure << '\n';
        QCoreApplication::exit(failure.empty() ? 0 : 1);
    });
}

int run(GuardedApplication& application, const LaunchOptions& options) {
    ApplicationServices services(std::make_unique<FileUserDefaults>(FileUserDefaults::standardPath()));
    services.setStoreDirectory(RunStore::defaultDirectory());
    AppController controller(services);
    application.setFrontWindow([&controller] { return controller.frontWindow(); });
    SingleInstance instance([&controller](const std::vector<std::string>& files) { controller.reopen(files); });
    if (!options.newInstance && instance.handOver(options.files)) return 0;
    const TerminationSignals termination(services.runLoop(), [](int number) { QCoreApplication::exit(128 + number); });
    controller.openFiles(options.files);
    controller.applicationDidFinishLaunching();
    controller.showStartPanelWhenEmpty();
    if (!options.picture.empty()) pictureAndEnd(controller, options.picture);
    return QApplication::exec();
}

} // namespace
} // namespace orrery

int main(int argc, char** argv) {
    using namespace orrery;
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away is a failed write, which is reported
    std::signal(SIGXFSZ, SIG_IGN); // so is a file beyond the size limit
    int exitCode = 0;
    const auto options = launchOptions(argc, argv, exitCode);
    if (!options) return exitCode;
    const auto application = makeApplication();
    if (const QString platform = QGuiApplication::platformName(); platform == "offscreen" || platform == "minimal") {
        std::cerr << "orrery: QT_QPA_PLATFORM=" << platform.toStdString()
                  << " shows no windows. Start it in a desktop session, or use orrery-batch without one.\n";
        return 1;
    }
    try {
        return run(*application, *options);
    } catch (const std::exception& failure) {
        logLine(failure.what());
        (void)QtAlerts(nullptr).runModal({"Orrery cannot start.", failure.what(), {"OK"}, Severity::Critical});
        return 1;
    }
}
