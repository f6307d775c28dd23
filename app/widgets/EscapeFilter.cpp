#include "app/widgets/EscapeFilter.h"

#include <QKeyEvent>
#include <QWidget>
#include <utility>

namespace orrery {

namespace {

class KeyFilter : public QObject {
public:
    KeyFilter(QObject* parent, Qt::Key key, std::function<void()> action)
        : QObject(parent), m_key(key), m_action(std::move(action)) {}

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        const auto& pressed =
            static_cast<QKeyEvent&>(*event); // NOLINT(cppcoreguidelines-pro-type-static-cast-downcast)
        const bool isAlone = (pressed.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier)) == Qt::NoModifier;
        if (pressed.key() != m_key || !isAlone) return false;
        m_action();
        return true;
    }

private:
    Qt::Key m_key;
    std::function<void()> m_action;
};

} // namespace

void letKeyDo(QWidget& field, Qt::Key key, std::function<void()> action) {
    field.installEventFilter(new KeyFilter(&field, key, std::move(action)));
}

void letEscapeDo(QWidget& field, std::function<void()> action) {
    letKeyDo(field, Qt::Key_Escape, std::move(action));
}

} // namespace orrery
