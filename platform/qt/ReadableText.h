#pragma once

#include <QAccessibleWidget>
#include <functional>

namespace orrery {

/// A widget's text for readers of the screen, where Qt's own interface of the widget has none: it can be asked for
/// whole, by lines and by words.
class ReadableText : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    ReadableText(QWidget& widget, QAccessible::Role role, std::function<QString()> text);

    void* interface_cast(QAccessible::InterfaceType type) override;
    [[nodiscard]] QAccessible::State state() const override;
    [[nodiscard]] QString text(QAccessible::Text which) const override;

    void selection(int index, int* begin, int* end) const override;
    [[nodiscard]] int selectionCount() const override { return 0; }
    void addSelection(int begin, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int begin, int end) override;
    [[nodiscard]] int cursorPosition() const override { return characterCount(); }
    void setCursorPosition(int position) override;
    [[nodiscard]] QString text(int begin, int end) const override;
    [[nodiscard]] int characterCount() const override { return static_cast<int>(m_text().size()); }
    [[nodiscard]] QRect characterRect(int offset) const override;
    [[nodiscard]] int offsetAtPoint(const QPoint& point) const override;
    void scrollToSubstring(int begin, int end) override;
    QString attributes(int offset, int* begin, int* end) const override;

private:
    std::function<QString()> m_text;
};

/// Has the application's widgets answer readers of the screen: live lines with what they say, and choosers with their
/// names. Again is as good as once.
void installAccessibility();

/// Has the window's labels that are named by what they are about be read by what they say, and each change of it told;
/// the name describes them. Labels of pictures keep their names.
void readLabelsByTheirText(QWidget& window);

} // namespace orrery
