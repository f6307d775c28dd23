#pragma once

#include "app/widgets/InterfaceDescriptions.h"
#include "document/MyDocument.h"
#include "platform/qt/QtControls.h"

#include <QObject>
#include <QTimer>

namespace orrery {

/// The lower part of the window: start/stop button, busy indicator, the run's state in words, and the engine's text.
/// The state stands as a mark on the plot's tab, too.
class RunPanel : public QObject {
    Q_OBJECT

public:
    RunPanel(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu);
    void addOutlets(DocumentOutlets& outlets);
    void refresh(); // the run's state changed

private:
    void showState();

    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    Ui::MainMenu& m_menu;
    QtTwoStateButton m_button;
    QtProgressWheel m_wheel;
    QTimer m_aging; // while the state tells how old something is
};

} // namespace orrery
