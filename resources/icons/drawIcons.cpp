// Draws the program's icon and the menu's icons as PNG files into the folder given. Run it after a change here, and
// keep what it draws: cmake --build build/dev --target drawIcons && build/dev/bin/drawIcons resources/icons/orrery
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <initializer_list>

namespace {

/// A drawing on a field of 16 by 16: "M x y" moves, "L x y" draws a line, "O x y r" a circle, "A x y r start sweep" a
/// piece of one in degrees, "Z" closes. The colour is legible on light and on dark.
struct Drawing {
    const char* name;
    const char* strokes;
    bool isFilled = false;
    const char* colour = "#6d83a3";
};

constexpr const char* green = "#2f9e5b";
constexpr const char* red = "#d0484c";

const std::initializer_list<Drawing> drawings = {
    {"document-new", "M 3.5 1.5 L 9.5 1.5 L 12.5 4.5 L 12.5 14.5 L 3.5 14.5 Z M 8 6.5 L 8 11.5 M 5.5 9 L 10.5 9"},
    {"document-open", "M 1.5 13.5 L 1.5 3.5 L 6 3.5 L 7.5 5.5 L 12.5 5.5 L 12.5 7.5 M 1.5 13.5 L 4 7.5 L 15 7.5 L 12.5 "
                      "13.5 Z"},
    {"document-save",
     "M 2 2 L 12 2 L 14 4 L 14 14 L 2 14 Z M 5 2 L 5 5.5 L 10.5 5.5 L 10.5 2 M 4.5 14 L 4.5 9 L 11.5 9 "
     "L 11.5 14"},
    {"document-save-as", "M 7 14 L 2 14 L 2 2 L 12 2 L 14 4 L 14 7 M 5 2 L 5 5.5 L 10.5 5.5 L 10.5 2 M 8.5 14.5 L 8.5 "
                         "12.5 L 13 8 L 15 10 L 10.5 14.5 Z"},
    {"document-revert", "A 8 8 5.5 150 -300 M 1.5 2.5 L 3 6 L 6.8 5"},
    {"document-send", "M 1.5 8 L 14.5 2 L 10.5 14 L 7.5 9 Z M 7.5 9 L 14.5 2"},
    {"text-x-generic",
     "M 3.5 1.5 L 9.5 1.5 L 12.5 4.5 L 12.5 14.5 L 3.5 14.5 Z M 6 7 L 10 7 M 6 9.5 L 10 9.5 M 6 12 L 9 "
     "12"},
    {"window-close", "M 3.5 3.5 L 12.5 12.5 M 12.5 3.5 L 3.5 12.5"},
    {"application-exit", "A 8 8.5 5.5 130 280 M 8 1.5 L 8 7.5", false, red},
    {"preferences-system", "M 1.5 4 L 8 4 M 12 4 L 14.5 4 O 10 4 2 M 1.5 11.5 L 3.5 11.5 M 7.5 11.5 L 14.5 11.5 O 5.5 "
                           "11.5 2"},
    {"edit-undo", "M 5.5 2.5 L 2 6 L 5.5 9.5 M 2 6 L 10 6 A 10 9.5 3.5 90 -180 M 10 13 L 7 13"},
    {"edit-redo", "M 10.5 2.5 L 14 6 L 10.5 9.5 M 14 6 L 6 6 A 6 9.5 3.5 90 180 M 6 13 L 9 13"},
    {"edit-find", "O 6.5 6.5 4.5 M 10 10 L 14.5 14.5"},
    {"edit-copy", "M 5.5 5.5 L 13.5 5.5 L 13.5 14.5 L 5.5 14.5 Z M 3 10.5 L 2.5 10.5 L 2.5 1.5 L 10.5 1.5 L 10.5 3"},
    {"edit-clear",
     "M 2.5 4 L 13.5 4 M 6 4 L 6 2 L 10 2 L 10 4 M 4 4 L 4.5 14 L 11.5 14 L 12 4 M 6.8 7 L 6.8 11 M 9.2 7 "
     "L 9.2 11"},
    {"list-add", "M 8 2.5 L 8 13.5 M 2.5 8 L 13.5 8"},
    {"list-remove", "M 2.5 8 L 13.5 8"},
    {"go-up", "M 8 13.5 L 8 2.5 M 3.5 7 L 8 2.5 L 12.5 7"},
    {"go-down", "M 8 2.5 L 8 13.5 M 3.5 9 L 8 13.5 L 12.5 9"},
    {"go-previous", "M 13.5 8 L 2.5 8 M 7 3.5 L 2.5 8 L 7 12.5"},
    {"go-next", "M 2.5 8 L 13.5 8 M 9 3.5 L 13.5 8 L 9 12.5"},
    {"media-playback-start", "M 4 2.5 L 13 8 L 4 13.5 Z", true, green},
    {"media-playback-stop", "M 3.5 3.5 L 12.5 3.5 L 12.5 12.5 L 3.5 12.5 Z", true, red},
    {"view-restore", "M 2 6 L 2 2 L 6 2 M 10 2 L 14 2 L 14 6 M 14 10 L 14 14 L 10 14 M 6 14 L 2 14 L 2 10 O 8 8 1.5"},
    {"help-contents", "O 8 8 6.5 A 8 6.2 2.2 170 -230 M 8 8.8 L 8 9.6 M 8 11.6 L 8 12"},
    {"help-about", "O 8 8 6.5 M 8 7.2 L 8 11.8 M 8 4.4 L 8 4.8"},
};

QPainterPath pathOf(const char* strokes) {
    QPainterPath path;
    const QStringList words = QString::fromLatin1(strokes).split(' ', Qt::SkipEmptyParts);
    qsizetype at = 0;
    const auto next = [&] { return words.at(at++).toDouble(); };
    while (at < words.size()) {
        const QString& command = words.at(at++);
        if (command == "Z") {
            path.closeSubpath();
            continue;
        }
        const double x = next();
        const double y = next();
        if (command == "M") path.moveTo(x, y);
        if (command == "L") path.lineTo(x, y);
        if (command != "O" && command != "A") continue;
        const double r = next();
        const QRectF box(x - r, y - r, 2 * r, 2 * r);
        if (command == "O") {
            path.addEllipse(box);
        } else {
            const double start = next();
            path.arcMoveTo(box, start);
            path.arcTo(box, start, next());
        }
    }
    return path;
}

QImage draw(int size, double field, const auto& paint) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / field, size / field);
    paint(painter);
    return image;
}

void paintMenuIcon(QPainter& painter, const Drawing& drawing) {
    const QColor colour(drawing.colour);
    painter.setPen(QPen(colour, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(drawing.isFilled ? QBrush(colour) : Qt::NoBrush);
    painter.drawPath(pathOf(drawing.strokes));
}

/// A sun and three planets on their ways, tilted, on a dark sky.
void paintProgramIcon(QPainter& painter) {
    QLinearGradient sky(0, 0, 0, 64);
    sky.setColorAt(0, QColor("#2c3f63"));
    sky.setColorAt(1, QColor("#131c33"));
    painter.setPen(Qt::NoPen);
    painter.setBrush(sky);
    painter.drawRoundedRect(QRectF(2, 2, 60, 60), 14, 14);
    painter.translate(32, 32);
    painter.rotate(-18);
    const struct {
        double radius, angle, size;
        const char* colour;
    } planets[] = {{12, 205, 3.2, "#e0915a"}, {18.5, 35, 4.2, "#6fb7e9"}, {25.5, 118, 3.6, "#9fd18b"}};
    constexpr double flat = 0.62;
    for (const auto& planet : planets) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(QColor(255, 255, 255, 130), 1.3));
        painter.drawEllipse(QPointF(0, 0), planet.radius, planet.radius * flat);
        const double angle = planet.angle * 3.14159265358979 / 180;
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(planet.colour));
        painter.drawEllipse(QPointF(planet.radius * std::cos(angle), -planet.radius * flat * std::sin(angle)),
                            planet.size, planet.size);
    }
    QRadialGradient sun(0, 0, 7);
    sun.setColorAt(0, QColor("#fff3c4"));
    sun.setColorAt(1, QColor("#f5b731"));
    painter.setPen(Qt::NoPen);
    painter.setBrush(sun);
    painter.drawEllipse(QPointF(0, 0), 6.5, 6.5);
}

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const QDir folder(argc > 1 ? argv[1] : ".");
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString place = QString::number(size);
        if (!folder.mkpath(place)) return 1;
        const QString path = folder.filePath(place) + "/%1.png";
        if (!draw(size, 64, paintProgramIcon).save(path.arg("orrery"))) return 1;
        if (size > 48) continue;
        for (const Drawing& each : drawings) {
            const QImage image = draw(size, 16, [&each](QPainter& painter) { paintMenuIcon(painter, each); });
            if (!image.save(path.arg(each.name))) return 1;
        }
    }
    return 0;
}
