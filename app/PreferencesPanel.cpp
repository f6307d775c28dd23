#include "app/PreferencesPanel.h"

#include "app/AppController.h"
#include "app/LogFont.h"
#include "app/widgets/FileNames.h"
#include "app/widgets/FrontWindow.h"
#include "app/widgets/WindowLayout.h"
#include "platform/Files.h"
#include "platform/qt/QtText.h"
#include "platform/qt/ReadableText.h"
#include "ui_Preferences.h"

namespace orrery {

PreferencesPanel::PreferencesPanel(AppController& application)
    : m_application(application), m_ui(std::make_unique<Ui::Preferences>()) {
    m_ui->setupUi(this);
    readLabelsByTheirText(*this);
    connect(m_ui->restoreLayout, &QCheckBox::toggled, this,
            [this](bool restores) { setRestoresWindowLayout(m_application.defaults(), restores); });
    connect(m_ui->logFontSize, &QSpinBox::valueChanged, this, [this](int points) {
        setLogFontSize(m_application.defaults(), points);
        emit m_application.preferencesChanged();
    });
    connect(m_ui->clearRecent, &QPushButton::clicked, this, [this] {
        m_application.documentController().recentDocuments().clear();
        refresh();
    });
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &QWidget::close);
}

PreferencesPanel::~PreferencesPanel() = default;

void PreferencesPanel::makeKeyAndOrderFront() {
    refresh();
    bringToFront(*this);
}

void PreferencesPanel::refresh() {
    const QSignalBlocker quietBox(m_ui->restoreLayout);
    const QSignalBlocker quietSize(m_ui->logFontSize);
    m_ui->restoreLayout->setChecked(restoresWindowLayout(m_application.defaults()));
    m_ui->logFontSize->setValue(logFontSize(m_application.defaults()));
    const auto count = m_application.documentController().recentDocuments().paths().size();
    m_ui->recentCount->setText(count == 0   ? tr("No recent setups")
                               : count == 1 ? tr("1 recent setup")
                                            : tr("%1 recent setups").arg(count));
    m_ui->clearRecent->setEnabled(count > 0);
    const auto engine = pathForAuxiliaryExecutable("Zephyr");
    m_ui->enginePath->setText(engine ? shownPath(*engine) : tr("Zephyr was not found beside the program"));
    const ApplicationServices& services = m_application.services();
    const std::string& fault = services.temporaryDirectoryFault();
    m_ui->temporaryDirectory->setText(fault.empty() ? shownPath(services.temporaryDirectory()) : qtText(fault));
    m_ui->defaultsPath->setText(shownPath(FileUserDefaults::standardPath()));
    for (QLineEdit* field : {m_ui->enginePath, m_ui->temporaryDirectory, m_ui->defaultsPath}) {
        field->setToolTip(field->text().toHtmlEscaped());
        field->setCursorPosition(0);
    }
}

} // namespace orrery
