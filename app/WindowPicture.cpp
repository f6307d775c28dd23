#include "app/WindowPicture.h"

#include "platform/Files.h"

#include <QBuffer>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <exception>
#include <utility>

namespace orrery {

namespace {

constexpr int lookEveryMs = 10;

void save(QWidget& window, const std::string& path) {
    QByteArray png;
    QBuffer buffer(&png);
    window.grab().save(&buffer, "PNG");
    replaceFile(path, {png.constData(), static_cast<std::size_t>(png.size())});
}

} // namespace

void takeWindowPicture(QWidget& window, const std::string& path, std::function<void(std::string)> taken) {
    auto* timer = new QTimer(&window);
    QObject::connect(timer, &QTimer::timeout, &window, [timer, &window, path, taken = std::move(taken)] {
        if (window.windowHandle() == nullptr || !window.windowHandle()->isExposed()) return;
        timer->stop();
        std::string failure;
        try {
            save(window, path);
        } catch (const std::exception& error) {
            failure = error.what();
        }
        taken(failure);
    });
    timer->start(lookEveryMs);
}

} // namespace orrery
