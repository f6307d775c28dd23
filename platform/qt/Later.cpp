#include "platform/qt/Later.h"

#include <QTimer>
#include <utility>

namespace orrery {

void later(QObject& context, std::function<void()> callback) {
    auto* timer = new QTimer(&context);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, &context, [timer, callback = std::move(callback)] {
        timer->deleteLater();
        callback();
    });
    timer->start(0);
}

} // namespace orrery
