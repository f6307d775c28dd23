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

/// The plot tab: the GL view, the rows of sweep and response variables, camera, light and rotation.
class PlotTab : public QObject {
    Q_OBJECT

public:
    PlotTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu, TextRasterizer& rasterizer);
    void addOutlets(DocumentOutlets& outlets);
    void refresh();
    void setCameraBounds(); // the document has set them

private:
    MyDocument& m_document;
    Ui::MyDocument& m_ui;
    Ui::MainMenu& m_menu;
};

} // namespace orrery
