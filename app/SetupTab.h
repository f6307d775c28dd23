#pragma once

#include "document/MyDocument.h"
#include "platform/TextRasterizer.h"

#include <QObject>

QT_BEGIN_NAMESPACE
namespace Ui {
class MainMenu;
class MyDocument;
} // namespace Ui
QT_END_NAMESPACE

namespace orrery {

/// The setup tab and the model outline: settings, the three tables, and what ties them to the document.
class SetupTab : public QObject {
    Q_OBJECT

public:
    SetupTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu);
    void addOutlets(DocumentOutlets& outlets);
    void refresh();

private:
    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    Ui::MainMenu& m_menu;
};

} // namespace orrery
