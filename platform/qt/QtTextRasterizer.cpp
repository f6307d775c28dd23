#include "platform/qt/QtTextRasterizer.h"

#include "platform/Log.h"
#include "platform/qt/QtElision.h"
#include "platform/values/OrreryError.h"

#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>

namespace orrery {

namespace {

constexpr qsizetype longestText = 10'000; // characters; no texture holds more, and shaping costs time

/// The family, or the nearest that stands in for it; the same letters at every resolution of the screen.
QFont fontFor(const TextAttributes& attributes) {
    QFont font;
    font.setFamilies({QString::fromStdString(attributes.font), "Lucida Sans", "DejaVu Sans", "Verdana", "sans-serif"});
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(attributes.size))));
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return font;
}

/// One line: control characters become blanks, and what is too long is shortened in the middle.
QString oneLine(std::string_view text, const QFontMetricsF& metrics, int maxWidth) {
    QString line = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    std::ranges::replace_if(
        line, [](QChar c) { return c.category() == QChar::Other_Control || c == QChar(0x2028) || c == QChar(0x2029); },
        QChar(' '));
    if (line.size() > longestText) {
        line = line.left(longestText / 2) + QChar(0x2026) + line.right(longestText / 2);
    }
    return metrics.horizontalAdvance(line) > maxWidth ? elidedName(line, metrics, maxWidth) : line;
}

QImage drawn(const QString& line, const QFont& font, const QColor& color, int maxWidth) {
    const QFontMetricsF metrics(font);
    const int width = std::min(maxWidth, static_cast<int>(std::ceil(metrics.horizontalAdvance(line))));
    QImage image(width, static_cast<int>(std::ceil(metrics.height())), QImage::Format_RGBA8888);
    if (image.isNull()) {
        return image;
    }
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(QPointF(0, metrics.ascent()), line);
    painter.end();
    return image.convertToFormat(QImage::Format_RGBX8888); // no pixel is translucent, whatever the fonts did
}

/// Keeps Qt's advice about the session (no runtime directory and the like) out of the user's terminal.
class QuietStart {
public:
    QuietStart() { previous = qInstallMessageHandler(&QuietStart::pass); }
    QuietStart(const QuietStart&) = delete;
    QuietStart& operator=(const QuietStart&) = delete;
    ~QuietStart() { qInstallMessageHandler(previous); }

private:
    static void pass(QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type == QtCriticalMsg || type == QtFatalMsg) {
            logLine(message.toStdString());
        }
    }
    static inline QtMessageHandler previous = nullptr;
};

} // namespace

OffscreenGui::OffscreenGui() {
    if (QCoreApplication::instance() == nullptr) {
        // The application keeps both references for its life, and takes the options that it knows out of the list.
        static std::array<char, 7> name{"orrery"};
        static std::array<char, 10> option{"-platform"};
        static std::array<char, 10> platform{"offscreen"};
        static std::array<char*, 4> arguments{};
        static int count = 0;
        arguments = {name.data(), option.data(), platform.data(), nullptr};
        count = 3;
        const QuietStart quiet;
        m_application = std::make_unique<QGuiApplication>(count, arguments.data());
    } else if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr) {
        throw AssertionFailure("Text is drawn in an application without fonts.");
    }
}

OffscreenGui::~OffscreenGui() = default;

Pixels QtTextRasterizer::rasterize(std::string_view text, const TextAttributes& attributes, int maxWidth) {
    const QFont font = fontFor(attributes);
    const auto& color = attributes.foreground;
    const QImage image =
        drawn(oneLine(text, QFontMetricsF(font), maxWidth), font, QColor(color[0], color[1], color[2]), maxWidth);
    Pixels pixels{image.width(), image.height(), {}};
    const std::size_t row = static_cast<std::size_t>(image.width()) * 4;
    for (int y = 0; y < image.height(); ++y) {
        pixels.rgba.insert(pixels.rgba.end(), image.constScanLine(y), image.constScanLine(y) + row);
    }
    return pixels;
}

} // namespace orrery
