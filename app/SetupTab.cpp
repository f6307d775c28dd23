#include "app/SetupTab.h"

#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

namespace orrery {

SetupTab::SetupTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu)
    : m_document(document), m_ui(ui), m_menu(menu) {}

void SetupTab::addOutlets(DocumentOutlets& /*outlets*/) {}

void SetupTab::refresh() {}

} // namespace orrery
