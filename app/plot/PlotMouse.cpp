#include "app/plot/PlotMouse.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>
#include <algorithm>
#include <functional>

namespace orrery {

namespace {

/// Ways to move the camera by hand, told apart from its controls, which count from 0.
constexpr PlotControl byMouse{PlotAct::MoveCamera, 100};
constexpr PlotControl byWheel{PlotAct::MoveCamera, 101};
constexpr PlotControl byKey{PlotAct::MoveCamera, 102};

constexpr float degreesPerPixel = 0.5F;
constexpr float heightPerPixel = 0.01F;
constexpr float degreesPerKey = 5;
constexpr float heightPerKey = 0.1F;
constexpr float depthPerNotch = 0.25F;

/// A range in which the scene stays in sight, between the planes of the projection.
struct Limits {
    float low;
    float high;
};
constexpr Limits heights{-6, 6};
constexpr Limits depths{0.25F, 8};

/// The value moved within the limits; one that was typed beyond them may only come nearer.
float moved(float value, float step, Limits limits) {
    return std::clamp(value + step, std::min(value, limits.low), std::max(value, limits.high));
}

} // namespace

PlotMouse::PlotMouse(MyDocument& document, QWidget& view, QObject* parent) : QObject(parent), m_document(document) {
    view.installEventFilter(this);
}

bool PlotMouse::eventFilter(QObject* /*watched*/, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return press(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return drag(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonDblClick:
        m_document.plot().resetCamera();
        return true;
    case QEvent::Wheel:
        return wheel(*static_cast<QWheelEvent*>(event));
    case QEvent::KeyPress:
        return key(*static_cast<QKeyEvent*>(event));
    default:
        return false;
    }
}

bool PlotMouse::press(const QMouseEvent& event) {
    if (event.button() != Qt::LeftButton) return false;
    m_last = event.position();
    return true;
}

bool PlotMouse::drag(const QMouseEvent& event) {
    if (!event.buttons().testFlag(Qt::LeftButton)) return false;
    const QPointF way = event.position() - m_last;
    m_last = event.position();
    m_document.plot().change(byMouse, [&] {
        if (way.x() != 0) turn(static_cast<float>(way.x()) * degreesPerPixel);
        if (way.y() != 0) raiseEye(static_cast<float>(way.y()) * heightPerPixel);
    });
    return true;
}

bool PlotMouse::wheel(const QWheelEvent& event) {
    const float notches = static_cast<float>(event.angleDelta().y()) / float{QWheelEvent::DefaultDeltasPerStep};
    if (notches != 0) m_document.plot().change(byWheel, [&] { retreatEye(-notches * depthPerNotch); });
    return true;
}

bool PlotMouse::key(const QKeyEvent& event) {
    const auto move = [this](void (PlotMouse::*by)(float), float step) {
        m_document.plot().change(byKey, [&] { std::invoke(by, this, step); });
        return true;
    };
    switch (event.key()) {
    case Qt::Key_Left:
        return move(&PlotMouse::turn, -degreesPerKey);
    case Qt::Key_Right:
        return move(&PlotMouse::turn, degreesPerKey);
    case Qt::Key_Up:
        return move(&PlotMouse::raiseEye, heightPerKey);
    case Qt::Key_Down:
        return move(&PlotMouse::raiseEye, -heightPerKey);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return move(&PlotMouse::retreatEye, -depthPerNotch);
    case Qt::Key_Minus:
        return move(&PlotMouse::retreatEye, depthPerNotch);
    case Qt::Key_0:
        m_document.plot().resetCamera();
        return true;
    default:
        return false;
    }
}

void PlotMouse::turn(float degrees) {
    m_document.incYRotation(degrees);
}

void PlotMouse::raiseEye(float step) {
    m_document.setEyeYPos(moved(m_document.eyeYPos(), step, heights));
}

void PlotMouse::retreatEye(float step) {
    m_document.setEyeZPos(moved(m_document.eyeZPos(), step, depths));
}

} // namespace orrery
