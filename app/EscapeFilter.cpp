#include "app/EscapeFilter.h"

#include <QKeyEvent>
#include <QWidget>
#include <utility>

namespace orrery {

namespace {

class EscapeFilter : public QObject {
public:
    EscapeFilter(QObject* parent, std::function<void()> action) : QObject(parent), m_action(std::move(action)) {}

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) return false;
        m_action();
        return true;
    }

private:
    std::function<void()> m_action;
};

} // namespace

void letEscapeDo(QWidget& field, std::function<void()> action) {
    field.installEventFilter(new EscapeFilter(&field, std::move(action)));
}

} // namespace orrery
