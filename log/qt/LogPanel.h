#pragma once

#include <QWidget>
#include <string>

class QLabel;
class QLineEdit;

namespace orrery {

class LogView;
enum class FindStart;

/// A log with what belongs to it: a bar to find in it, hidden until Ctrl+F, F3 or the menu asks for it, and the panel
/// to save it.
class LogPanel : public QWidget {
    Q_OBJECT

public:
    explicit LogPanel(QWidget* parent = nullptr);

    [[nodiscard]] LogView& view() { return *m_view; }
    void showFind(); // with the selected text to find
    void hideFind();
    void saveAs(); // asks where

protected:
    bool event(QEvent* event) override;

private:
    void makeFindBar();
    void find(FindStart start);
    bool handleKey(QEvent& event);
    void saveTo(const QString& path);
    void tell(const QString& message, const std::string& details);

    LogView* m_view;
    QWidget* m_findBar;
    QLineEdit* m_field;
    QLabel* m_status;
};

} // namespace orrery
