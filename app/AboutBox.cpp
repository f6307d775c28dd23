#include "app/AboutBox.h"

#include <QApplication>
#include <QMessageBox>

namespace orrery {

void beginAboutBox(QWidget* window) {
    auto* box = new QMessageBox(window); // deletes itself when closed
    box->setObjectName("about");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(QObject::tr("About Orrery"));
    box->setIconPixmap(QApplication::windowIcon().pixmap(96));
    box->setTextFormat(Qt::RichText);
    box->setText(QObject::tr("<h2>Orrery %1</h2><p>Sets up, runs and shows parameter sweeps of a simulation model.</p>")
                     .arg(QApplication::applicationVersion()));
    box->setInformativeText(QObject::tr("<p>Free software under the MIT licence.</p>"
                                        "<p>It uses Qt %1, OpenGL and GLU, Expat, fmt, JSON for Modern C++ and "
                                        "CLI11.</p>")
                                .arg(qVersion()));
    box->open();
}

} // namespace orrery
