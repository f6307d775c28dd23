#include "platform/qt/ReadableText.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <algorithm>

namespace orrery {

namespace {

constexpr const char* liveProperty = "live";

/// Qt calls a chooser by what is chosen in it, however it is named. It may get its name later than this interface.
class NamedChooser : public QAccessibleWidget {
public:
    explicit NamedChooser(QComboBox& chooser)
        : QAccessibleWidget(&chooser, QAccessible::ComboBox), m_chooser(chooser) {}

    [[nodiscard]] QString text(QAccessible::Text which) const override {
        const bool isNamed = !m_chooser.accessibleName().isEmpty();
        const bool isChoice = which == QAccessible::Value || (which == QAccessible::Name && !isNamed);
        return isChoice ? m_chooser.currentText() : QAccessibleWidget::text(which);
    }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        const bool isOpen = m_chooser.view()->isVisible();
        state.expandable = true;
        state.expanded = isOpen;
        state.collapsed = !isOpen;
        state.hasPopup = true;
        return state;
    }
    [[nodiscard]] int childCount() const override { return 1; }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        return index == 0 ? QAccessible::queryAccessibleInterface(m_chooser.view()) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child->object() == m_chooser.view() ? 0 : -1;
    }
    [[nodiscard]] QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
    void doAction(const QString& name) override {
        if (name != showMenuAction() && name != pressAction()) return;
        m_chooser.view()->isVisible() ? m_chooser.hidePopup() : m_chooser.showPopup();
    }

private:
    QComboBox& m_chooser;
};

QAccessibleInterface* interfaceFor(const QString& className, QObject* object) {
    if (className == "QLabel" && object->property(liveProperty).toBool()) {
        auto* label = qobject_cast<QLabel*>(object);
        return new ReadableText(*label, QAccessible::StaticText, [label] { return label->text(); });
    }
    auto* chooser = className == "QComboBox" ? qobject_cast<QComboBox*>(object) : nullptr;
    return chooser == nullptr || chooser->isEditable() ? nullptr : new NamedChooser(*chooser);
}

} // namespace

ReadableText::ReadableText(QWidget& widget, QAccessible::Role role, std::function<QString()> text)
    : QAccessibleWidget(&widget, role), m_text(std::move(text)) {}

void* ReadableText::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QAccessible::State ReadableText::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = false;
    return state;
}

/// A text without a name of its own is called by what it says.
QString ReadableText::text(QAccessible::Text which) const {
    const bool isNamed = !widget()->accessibleName().isEmpty();
    if (which == QAccessible::Value || (which == QAccessible::Name && !isNamed)) return m_text();
    return QAccessibleWidget::text(which);
}

QString ReadableText::text(int begin, int end) const {
    const QString whole = m_text();
    const qsizetype from = std::clamp<qsizetype>(begin, 0, whole.size());
    const qsizetype to = end < 0 ? whole.size() : std::clamp<qsizetype>(end, from, whole.size());
    return whole.mid(from, to - from);
}

void ReadableText::selection(int /*index*/, int* begin, int* end) const {
    *begin = *end = 0;
}

// It is read only, and what a reader of the screen would select or scroll to is not followed.
void ReadableText::addSelection(int /*begin*/, int /*end*/) {}
void ReadableText::removeSelection(int /*index*/) {}
void ReadableText::setSelection(int /*index*/, int /*begin*/, int /*end*/) {}
void ReadableText::setCursorPosition(int /*position*/) {}
void ReadableText::scrollToSubstring(int /*begin*/, int /*end*/) {}

QRect ReadableText::characterRect(int /*offset*/) const {
    return {};
}

int ReadableText::offsetAtPoint(const QPoint& /*point*/) const {
    return -1;
}

QString ReadableText::attributes(int /*offset*/, int* begin, int* end) const {
    *begin = 0;
    *end = characterCount();
    return {};
}

void installAccessibility() {
    QAccessible::installFactory(interfaceFor);
}

/// Qt tells a label's change of text by itself where the label has no other name.
void readLabelsByTheirText(QWidget& window) {
    for (QLabel* label : window.findChildren<QLabel*>()) {
        const QString about = label->accessibleName();
        if (about.isEmpty() || !label->pixmap().isNull()) continue;
        label->setProperty(liveProperty, true);
        label->setAccessibleName({});
        label->setAccessibleDescription(about);
    }
}

} // namespace orrery
