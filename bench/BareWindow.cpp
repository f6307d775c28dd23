// The least that a program with Qt's windows can do: an empty one. The application's start is measured beside it.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1180, 820);
    window.show();
    return QApplication::exec();
}
