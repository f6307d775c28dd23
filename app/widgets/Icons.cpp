#include "app/widgets/Icons.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QIconEngine>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QPalette>
#include <optional>
#include <utility>

namespace orrery {

namespace {

bool isOfOneColor(const QImage& image) {
    std::optional<QRgb> color;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (qAlpha(pixel) < 255) continue; // at the edges, the colour is rounded
            if (pixel != color.value_or(pixel)) return false;
            color = pixel;
        }
    }
    return color.has_value();
}

class MenuIconEngine : public QIconEngine {
public:
    explicit MenuIconEngine(QIcon icon) : m_icon(std::move(icon)) {}

    void paint(QPainter* painter, const QRect& rectangle, QIcon::Mode mode, QIcon::State state) override {
        const qreal ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rectangle, pixmap((QSizeF(rectangle.size()) * ratio).toSize(), mode, state));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture = m_icon.pixmap(size, 1.0, mode, state);
        const bool isHighlighted = mode == QIcon::Active || mode == QIcon::Selected;
        if (!isHighlighted || !isOfOneColor(picture.toImage())) return picture;
        QPainter painter(&picture);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(picture.rect(), QApplication::palette("QMenu").color(QPalette::HighlightedText));
        return picture;
    }

    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return m_icon.actualSize(size, mode, state);
    }
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override {
        return m_icon.availableSizes(mode, state);
    }
    QString iconName() override { return m_icon.name(); }
    [[nodiscard]] QIconEngine* clone() const override { return new MenuIconEngine(*this); }

private:
    QIcon m_icon;
};

} // namespace

void adaptIconsOfMenus(QWidget& window) {
    for (const QMenu* menu : window.findChildren<QMenu*>()) {
        for (QAction* action : menu->actions()) {
            if (!action->icon().isNull()) action->setIcon(QIcon(new MenuIconEngine(action->icon())));
        }
    }
}

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
