#include "app/setup/NodeIcons.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <map>

namespace orrery {

namespace {

enum class Shape { Level, Part, Inputs, Outputs, Input, Output, Warning };

/// Draws one shape on a canvas of 16 × 16 units.
class ShapePainter {
public:
    ShapePainter(QPainter& painter, const QColor& color) : m_painter(painter), m_color(color) {}

    void draw(Shape shape, QChar letter) {
        m_painter.setPen(QPen(m_color, 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        switch (shape) {
        case Shape::Level:
            return level();
        case Shape::Part:
            return part(letter);
        case Shape::Inputs:
            return group(true);
        case Shape::Outputs:
            return group(false);
        case Shape::Input:
            return port(true);
        case Shape::Output:
            return port(false);
        case Shape::Warning:
            return warning();
        }
    }

private:
    /// Boxes in a box.
    void level() {
        m_painter.drawRoundedRect(QRectF(1.5, 1.5, 13, 13), 1.5, 1.5);
        m_painter.fillRect(QRectF(4, 4, 3.5, 3.5), m_color);
        m_painter.fillRect(QRectF(8.5, 4, 3.5, 3.5), m_color);
        m_painter.fillRect(QRectF(4, 8.5, 3.5, 3.5), m_color);
    }

    /// A filled box with a letter cut out of it.
    void part(QChar letter) {
        QPainterPath box;
        box.addRoundedRect(QRectF(1.5, 1.5, 13, 13), 3, 3);
        QFont font = QApplication::font();
        font.setPixelSize(11);
        font.setBold(true);
        QPainterPath glyph;
        glyph.addText(0, 0, font, letter);
        const QPointF middle = glyph.boundingRect().center();
        m_painter.fillPath(box.subtracted(glyph.translated(QPointF(8, 8) - middle)), m_color);
    }

    /// The side of a part with two arrows into it or out of it.
    void group(bool inwards) {
        m_painter.drawLine(QPointF(inwards ? 13 : 3, 2.5), QPointF(inwards ? 13 : 3, 13.5));
        arrow(inwards ? 2 : 5.5, 5.5, 5, 2);
        arrow(inwards ? 2 : 5.5, 10.5, 5, 2);
    }

    /// One arrow into a ring, or out of a dot.
    void port(bool inwards) {
        if (inwards) {
            m_painter.drawEllipse(QPointF(12, 8), 2.6, 2.6);
            arrow(1.5, 8, 5, 2.6);
        } else {
            m_painter.setBrush(m_color);
            m_painter.drawEllipse(QPointF(4, 8), 2.6, 2.6);
            m_painter.setBrush(Qt::NoBrush);
            arrow(8, 8, 5, 2.6);
        }
    }

    void arrow(double left, double y, double length, double head) {
        const QPointF tip(left + length + 1, y);
        m_painter.drawLine(QPointF(left, y), tip);
        m_painter.drawPolyline(QPolygonF{tip + QPointF(-head, -head), tip, tip + QPointF(-head, head)});
    }

    void warning() {
        const QPolygonF triangle{QPointF(8, 2), QPointF(14.5, 13.5), QPointF(1.5, 13.5)};
        m_painter.setPen(QPen(QColor(0x8a, 0x5a, 0x00), 1, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        m_painter.setBrush(QColor(0xff, 0xc8, 0x3d));
        m_painter.drawPolygon(triangle);
        m_painter.setPen(QPen(QColor(0x30, 0x20, 0x00), 1.6, Qt::SolidLine, Qt::RoundCap));
        m_painter.drawLine(QPointF(8, 6), QPointF(8, 9.4));
        m_painter.drawPoint(QPointF(8, 11.8));
    }

    QPainter& m_painter;
    QColor m_color;
};

class ShapeEngine : public QIconEngine {
public:
    explicit ShapeEngine(Shape shape, QChar letter = {}) : m_shape(shape), m_letter(letter) {}

    void paint(QPainter* painter, const QRect& rectangle, QIcon::Mode mode, QIcon::State /*state*/) override {
        const double side = std::min(rectangle.width(), rectangle.height());
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::Text;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rectangle.center() + QPointF(0.5, 0.5) - QPointF(side, side) / 2);
        painter->scale(side / 16, side / 16);
        ShapePainter(*painter, QApplication::palette().color(group, role)).draw(m_shape, m_letter);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new ShapeEngine(*this); }

private:
    Shape m_shape;
    QChar m_letter;
};

QIcon drawn(Shape shape, QChar letter = {}) {
    return QIcon(new ShapeEngine(shape, letter));
}

/// Each made once.
const QIcon& partIcon(char letter) {
    static std::map<char, QIcon> icons;
    const auto [found, isNew] = icons.try_emplace(letter);
    if (isNew) found->second = drawn(Shape::Part, QLatin1Char(letter));
    return found->second;
}

} // namespace

const QIcon& portIcon(PortDirection direction) {
    static const QIcon input = drawn(Shape::Input);
    static const QIcon output = drawn(Shape::Output);
    return direction == PortDirection::Input ? input : output;
}

const QIcon& warningIcon() {
    static const QIcon icon = drawn(Shape::Warning);
    return icon;
}

const QIcon& nodeIcon(const ModelNode& node) {
    static const QIcon level = drawn(Shape::Level);
    static const QIcon inputs = drawn(Shape::Inputs);
    static const QIcon outputs = drawn(Shape::Outputs);
    switch (node.kind) {
    case ModelNodeKind::Level:
        return level;
    case ModelNodeKind::PortGroup:
        return node.name() == "inputs" ? inputs : outputs;
    case ModelNodeKind::Port:
        return portIcon(node.record.text("class") == inputClass ? PortDirection::Input : PortDirection::Output);
    case ModelNodeKind::Part:
        break;
    }
    const ModelClass* found = findModelClass(node.record.text("class"));
    return partIcon(found == nullptr ? '\0' : found->letter);
}

} // namespace orrery
