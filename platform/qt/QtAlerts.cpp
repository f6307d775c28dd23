#include "platform/qt/QtAlerts.h"

#include "platform/qt/AlertBox.h"

#include <QApplication>
#include <utility>

namespace orrery {

namespace {

const std::string& matterOf(const AlertText& text) {
    return text.matter.empty() ? text.message : text.matter;
}

/// The window's sheet about the matter that waits for its answer; null when there is none.
AlertBox* openSheet(const QWidget* window, const AlertText& text) {
    const QObjectList all = window != nullptr ? window->children() : QObjectList();
    for (QObject* child : all) {
        auto* box = dynamic_cast<AlertBox*>(child);
        if (box != nullptr && box->isOpenSheet() && matterOf(box->alert()) == matterOf(text)) return box;
    }
    return nullptr;
}

} // namespace

std::size_t QtAlerts::runModal(const AlertText& text) {
    AlertBox box(m_window, text);
    box.setWindowModality(Qt::ApplicationModal);
    box.exec();
    return box.answer();
}

void QtAlerts::beginSheet(const AlertText& text, std::function<void(std::size_t)> answered) {
    if (AlertBox* open = openSheet(m_window, text)) {
        open->replace(text, std::move(answered));
        return;
    }
    auto* box = new AlertBox(m_window, text); // the window's child; deletes itself when answered
    box->beginSheet(std::move(answered));
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
