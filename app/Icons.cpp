#include "app/Icons.h"

#include <QApplication>
#include <QIcon>

namespace orrery {

void useOwnIcons() {
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) return;
    QIcon::setFallbackThemeName("orrery"); // under ":/icons", where Qt looks for themes by itself
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        icon.addFile(QString(":/icons/orrery/%1/orrery.png").arg(size), QSize(size, size));
    }
    QGuiApplication::setWindowIcon(icon);
}

} // namespace orrery
