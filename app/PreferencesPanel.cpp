#include "app/PreferencesPanel.h"

#include "app/AppController.h"
#include "app/LogFont.h"
#include "app/widgets/FileNames.h"
#include "app/widgets/FrontWindow.h"
#include "app/widgets/WindowLayout.h"
#include "document/KeepingPreferences.h"
#include "platform/Files.h"
#include "platform/qt/QtText.h"
#include "platform/qt/ReadableText.h"
#include "ui_Preferences.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace orrery {

namespace {

constexpr double bytesPerGigabyte = 1e9;
constexpr std::size_t mostRuns = 1'000'000; // that the field is told of

} // namespace

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
    connect(m_ui->keepsRuns, &QCheckBox::toggled, this, &PreferencesPanel::setKeeping);
    connect(m_ui->keptRuns, &QSpinBox::valueChanged, this, &PreferencesPanel::setKeeping);
    connect(m_ui->keptSize, &QDoubleSpinBox::valueChanged, this, &PreferencesPanel::setKeeping);
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &QWidget::close);
}

PreferencesPanel::~PreferencesPanel() = default;

void PreferencesPanel::makeKeyAndOrderFront() {
    refresh();
    bringToFront(*this);
}

void PreferencesPanel::setKeeping() {
    const bool keeps = m_ui->keepsRuns->isChecked();
    const auto bytes = static_cast<std::uint64_t>(std::llround(m_ui->keptSize->value() * bytesPerGigabyte));
    setKeepingPreferences(m_application.defaults(),
                          {keeps, {static_cast<std::size_t>(m_ui->keptRuns->value()), bytes}});
    showKeeping();
}

void PreferencesPanel::showKeeping() {
    const KeepingPreferences keeping = keepingPreferences(m_application.defaults());
    const QSignalBlocker quietBox(m_ui->keepsRuns);
    const QSignalBlocker quietRuns(m_ui->keptRuns);
    const QSignalBlocker quietSize(m_ui->keptSize);
    m_ui->keepsRuns->setChecked(keeping.keeps);
    m_ui->keptRuns->setValue(static_cast<int>(std::min(keeping.limits.runs, mostRuns)));
    m_ui->keptSize->setValue(static_cast<double>(keeping.limits.bytes) / bytesPerGigabyte);
    for (QWidget* each : {static_cast<QWidget*>(m_ui->keptRuns), static_cast<QWidget*>(m_ui->keptSize)}) {
        each->setEnabled(keeping.keeps);
    }
    const std::string& store = m_application.services().storeDirectory();
    m_ui->keepsRuns->setToolTip(tr("They are kept in %1").arg(shownPath(store)).toHtmlEscaped());
}

void PreferencesPanel::refresh() {
    showKeeping();
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
