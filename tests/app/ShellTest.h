#pragma once

#include "app/WindowFixture.h"
#include "platform/qt/QtText.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <algorithm>

namespace orrery::test {

/// Answers sheets and file panels as a person does.
class ShellTest : public WindowTest {
protected:
    static QWidgetList windowsCalled(const char* name) {
        QWidgetList all = QApplication::topLevelWidgets();
        all.removeIf([name](const QWidget* each) { return each->objectName() != name; });
        return all;
    }
    static QMessageBox* alertOf(const QWidget& window) {
        const auto boxes = window.findChildren<QMessageBox*>("alert");
        const auto shown = std::ranges::find_if(boxes, [](const QMessageBox* box) { return box->isVisible(); });
        return shown == boxes.end() ? nullptr : *shown;
    }
    /// Waits for the window's alert whose message holds the text, and clicks the button.
    static void answer(const QWidget& window, const QString& message, const QString& button) {
        ASSERT_TRUE(waitFor([&] { return alertOf(window) && alertOf(window)->text().contains(message); }))
            << "no alert: " << coreText(message);
        QMessageBox& box = *alertOf(window);
        auto* found = box.findChild<QPushButton*>("alertButton" + button);
        ASSERT_NE(found, nullptr) << coreText(button);
        found->click();
        ASSERT_TRUE(waitFor([&] { return alertOf(window) != &box; }));
    }
    /// Waits for the file panel, types the name and accepts; an empty name cancels.
    static void chooseFile(const QWidget& window, const char* panelName, const std::string& name) {
        const auto panelOf = [&] { return window.findChild<QFileDialog*>(panelName); };
        ASSERT_TRUE(waitFor([&] { return panelOf() != nullptr && panelOf()->isVisible(); }));
        const QPointer<QFileDialog> panel = panelOf();
        auto& field = find<QLineEdit>(*panel, "fileNameEdit");
        panel->activateWindow();
        field.setFocus();
        ASSERT_TRUE(waitFor([&] { return field.hasFocus(); }));
        field.setText(qtPath(name));
        emit field.textEdited(qtPath(name)); // as typing does: what the panel had selected counts no more
        QMetaObject::invokeMethod(panel, name.empty() ? "reject" : "accept", Qt::QueuedConnection);
        ASSERT_TRUE(waitFor([&] { return panel == nullptr; }));
    }
    static void edit(DocumentWindow& window, const std::string& runLength) {
        window.document().setup().editText(setup_key::runLength, runLength);
        ASSERT_TRUE(window.isWindowModified());
    }
    [[nodiscard]] const std::vector<DocumentWindow*>& windows() const {
        return controller->documentController().windows();
    }
    /// A setup that an engine computes for minutes.
    [[nodiscard]] std::string slowSetup();
};

} // namespace orrery::test
