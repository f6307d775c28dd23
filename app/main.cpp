#include "app/AppController.h"
#include "platform/qt/QtGlSurface.h"
#include "plot/BasicOpenGLView.h"

#include <QApplication>
#include <QLocale>
#include <clocale>
#include <memory>

int main(int argc, char** argv) {
    using namespace orrery;
    QtGlSurface::setApplicationFormat(BasicOpenGLView::basicPixelFormat());
    QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // numbers are read and printed alike everywhere
    QApplication::setApplicationName("orrery");
    QApplication::setApplicationDisplayName("Orrery");
    QApplication::setApplicationVersion(ORRERY_VERSION);
    ApplicationServices services(std::make_unique<FileUserDefaults>(FileUserDefaults::standardPath()));
    AppController controller(services);
    controller.openFiles(QApplication::arguments().mid(1));
    controller.applicationDidFinishLaunching();
    return QApplication::exec();
}
