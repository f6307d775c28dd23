#pragma once

#include "app/InterfaceDescriptions.h"
#include "document/MyDocument.h"
#include "platform/qt/QtControls.h"

#include <QObject>

namespace orrery {

/// The lower part of the window: start/stop button, busy indicator and the engine's text.
class RunPanel : public QObject {
    Q_OBJECT

public:
    RunPanel(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu);
    void addOutlets(DocumentOutlets& outlets);
    void refresh(); // the run's state changed

private:
    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    Ui::MainMenu& m_menu;
    QtTwoStateButton m_button;
    QtProgressWheel m_wheel;
};

} // namespace orrery
