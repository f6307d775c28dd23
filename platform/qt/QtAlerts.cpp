#include "platform/qt/QtAlerts.h"

#include "platform/qt/QtText.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace orrery {

namespace {

/// A message box for the text. Buttons keep the order given, whatever the desktop's habit.
std::unique_ptr<QMessageBox> makeBox(QWidget* window, const AlertText& text) {
    auto box = std::make_unique<QMessageBox>(QMessageBox::NoIcon, QApplication::applicationDisplayName(),
                                             qtText(text.message), QMessageBox::NoButton, window);
    box->setObjectName("alert");
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(qtText(text.informative));
    box->setIcon(text.buttons.size() > 1 ? QMessageBox::Question : QMessageBox::Information);
    QPushButton* last = nullptr;
    QPushButton* cancel = nullptr;
    for (const std::string& title : text.buttons) {
        last = box->addButton(qtText(title), QMessageBox::ActionRole); // one role keeps one order
        last->setObjectName(qtText("alertButton" + title));
        if (title == "Cancel") cancel = last;
        if (box->defaultButton() == nullptr) box->setDefaultButton(last);
    }
    box->setEscapeButton(cancel != nullptr ? cancel : last);
    return box;
}

std::size_t answerOf(const QMessageBox& box, const AlertText& text) {
    const auto* clicked = box.clickedButton();
    for (std::size_t i = 0; i < text.buttons.size(); ++i) {
        if (clicked != nullptr && clicked->text() == qtText(text.buttons[i])) return i;
    }
    const auto cancel = std::ranges::find(text.buttons, "Cancel"); // closed by none: the program is ending
    return cancel != text.buttons.end() ? static_cast<std::size_t>(cancel - text.buttons.begin())
                                        : text.buttons.size() - 1;
}

} // namespace

std::size_t QtAlerts::runModal(const AlertText& text) {
    const auto box = makeBox(m_window, text);
    box->setWindowModality(Qt::ApplicationModal);
    box->exec();
    return answerOf(*box, text);
}

void QtAlerts::beginSheet(const AlertText& text, std::function<void(std::size_t)> answered) {
    QMessageBox* box = makeBox(m_window, text).release(); // the window's child; deletes itself when answered
    box->setWindowModality(Qt::WindowModal);
    box->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(box, &QMessageBox::finished, box, [box, text, answered = std::move(answered)] {
        if (answered) answered(answerOf(*box, text));
    });
    if (m_window != nullptr && !m_window->isVisible()) { // one that is being made would be shown on top of it
        QMetaObject::invokeMethod(box, &QDialog::open, Qt::QueuedConnection);
    } else {
        box->open();
    }
}

void QtAlerts::requestUserAttention() {
    if (m_window != nullptr && QApplication::activeWindow() == nullptr) QApplication::alert(m_window);
}

} // namespace orrery
