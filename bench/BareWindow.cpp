// The least that a program with Qt's windows can do: an empty one, pictured as soon as it is on the screen. The
// application's start is measured beside it.
#include "app/WindowPicture.h"

#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1180, 820);
    window.show();
    orrery::takeWindowPicture(window, application.arguments().value(1).toStdString(),
                              [](const std::string& failure) { QCoreApplication::exit(failure.empty() ? 0 : 1); });
    return QApplication::exec();
}
