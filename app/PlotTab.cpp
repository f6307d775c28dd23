#include "app/PlotTab.h"

#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

namespace orrery {

PlotTab::PlotTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu, TextRasterizer& /*rasterizer*/)
    : m_document(document), m_ui(ui), m_menu(menu) {}

void PlotTab::addOutlets(DocumentOutlets& /*outlets*/) {}

void PlotTab::refresh() {}

void PlotTab::setCameraBounds() {}

} // namespace orrery
