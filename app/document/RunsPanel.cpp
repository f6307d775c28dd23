#include "app/document/RunsPanel.h"

#include "app/widgets/FileNames.h"
#include "app/widgets/WindowLayout.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtText.h"
#include "platform/qt/ReadableText.h"
#include "platform/values/Numbers.h"
#include "run/results/RunHistory.h"
#include "ui_Runs.h"

#include <QHeaderView>
#include <QPushButton>
#include <QSignalBlocker>
#include <exception>

namespace orrery {

namespace {

enum Column { Started, Setup, Changed, Rows, State, Size, Pinned, Note };

QTableWidgetItem* textItem(const QString& text, bool isEditable = false) {
    auto* item = new QTableWidgetItem(text); // the table's
    item->setToolTip(text.toHtmlEscaped());
    if (!isEditable) item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    return item;
}

QTableWidgetItem* numberItem(const std::string& number) {
    QTableWidgetItem* item = textItem(qtText(number));
    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

QString stateText(const KeptRunInfo& run) {
    const QString rows = run.rowsFound < run.rows ? QObject::tr("incomplete") : QObject::tr("whole");
    const std::string end = badEnd(run);
    return end.empty() ? rows : rows + ", " + qtText(end);
}

QString changeText(const std::optional<std::string>& change) {
    if (!change) return QObject::tr("the first that is kept");
    return change->empty() ? QObject::tr("nothing") : qtText(*change);
}

} // namespace

RunsPanel::RunsPanel(const std::string& storeDirectory, QWidget& window)
    : QDialog(&window), m_store(storeDirectory), m_ui(std::make_unique<Ui::Runs>()) {
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    resize(sizeOnScreen(size()));
    readLabelsByTheirText(*this);
    QHeaderView& header = *m_ui->runs->horizontalHeader();
    header.setSectionResizeMode(QHeaderView::ResizeToContents);
    header.setSectionResizeMode(Changed, QHeaderView::Stretch);
    header.setSectionResizeMode(Note, QHeaderView::Stretch);
    connectControls();
}

RunsPanel::~RunsPanel() = default;

void RunsPanel::connectControls() {
    connect(m_ui->scope, &QComboBox::currentIndexChanged, this, &RunsPanel::refreshOrTell);
    connect(m_ui->runs, &QTableWidget::itemSelectionChanged, this, &RunsPanel::enableButtons);
    connect(m_ui->runs, &QTableWidget::itemChanged, this, [this](const QTableWidgetItem* item) {
        if (!guarded("The change was not kept.", [this, item] { edit(*item); })) refreshOrTell(); // as it still is
    });
    connect(m_ui->runs, &QTableWidget::itemDoubleClicked, this, [this](const QTableWidgetItem* item) {
        if (item->column() != Note && item->column() != Pinned) m_ui->show->click();
    });
    connect(m_ui->show, &QPushButton::clicked, this, [this] { emit showWanted(chosen()->path); });
    connect(m_ui->openSetup, &QPushButton::clicked, this, [this] { emit setupWanted(chosen()->path); });
    connect(m_ui->remove, &QPushButton::clicked, this, &RunsPanel::removeChosen);
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &QWidget::close);
}

void RunsPanel::list(const std::string& setupPath) {
    m_setupPath = setupPath;
    {
        const QSignalBlocker quiet(m_ui->scope);
        m_ui->scope->setCurrentIndex(setupPath.empty() ? 1 : 0);
        m_ui->scope->setEnabled(!setupPath.empty());
    }
    refreshOrTell();
}

void RunsPanel::refreshOrTell() {
    (void)guarded("The runs cannot be listed.", [this] { refresh(); });
}

void RunsPanel::refresh() {
    const bool all = m_ui->scope->currentIndex() == 1;
    m_runs = m_store.runs(all ? std::nullopt : std::optional(m_setupPath));
    m_changes = changesSinceRunBefore(m_runs);
    const QSignalBlocker quiet(m_ui->runs);
    m_ui->runs->setRowCount(0);
    m_ui->runs->setRowCount(static_cast<int>(m_runs.size()));
    for (int row = 0; row < m_ui->runs->rowCount(); ++row) {
        fillRow(row);
    }
    m_ui->runs->setColumnHidden(Setup, !all);
    m_ui->runs->setVisible(!m_runs.empty());
    m_ui->noRuns->setVisible(m_runs.empty());
    m_ui->noRuns->setText(all ? tr("No run was kept yet.") : tr("No run of this setup was kept yet."));
    if (!m_runs.empty()) m_ui->runs->selectRow(0);
    enableButtons();
}

void RunsPanel::fillRow(int row) {
    const KeptRunInfo& run = m_runs[static_cast<std::size_t>(row)];
    QTableWidget& table = *m_ui->runs;
    table.setItem(row, Started, textItem(qtText(run.started)));
    table.setItem(row, Setup, textItem(shownFileName(run.setupPath)));
    table.item(row, Setup)->setToolTip(shownPath(run.setupPath).toHtmlEscaped());
    table.setItem(row, Changed, textItem(changeText(m_changes[static_cast<std::size_t>(row)])));
    table.setItem(row, Rows, numberItem(rowsText(run)));
    table.setItem(row, State, textItem(stateText(run)));
    table.setItem(row, Size, numberItem(sizeText(run.bytes)));
    QTableWidgetItem* pinned = textItem({});
    pinned->setFlags(pinned->flags() | Qt::ItemIsUserCheckable);
    pinned->setCheckState(run.pinned ? Qt::Checked : Qt::Unchecked);
    pinned->setToolTip(tr("A pinned run is never removed to make room"));
    pinned->setData(Qt::AccessibleTextRole, tr("Pinned"));
    table.setItem(row, Pinned, pinned);
    table.setItem(row, Note, textItem(qtText(run.note), true));
}

void RunsPanel::edit(const QTableWidgetItem& item) {
    KeptRunInfo& run = m_runs[static_cast<std::size_t>(item.row())];
    if (item.column() == Pinned) {
        run.pinned = item.checkState() == Qt::Checked;
        m_store.setPinned(run.path, run.pinned);
    } else if (item.column() == Note) {
        run.note = coreText(item.text());
        m_store.setNote(run.path, run.note);
    }
}

void RunsPanel::removeChosen() {
    const KeptRunInfo* run = chosen();
    if (run == nullptr) return;
    QtAlerts(this).beginSheet({"Remove the run of " + run->started + "?",
                               "Its results are deleted, and cannot be brought back.",
                               {"Remove", "Cancel"},
                               Severity::Warning,
                               1},
                              [this, path = run->path](std::size_t button) {
                                  if (button != 0) return;
                                  (void)guarded("The run was not removed.", [&] { m_store.remove(path); });
                                  refreshOrTell();
                              });
}

const KeptRunInfo* RunsPanel::chosen() const {
    const int row = m_ui->runs->currentRow();
    return row < 0 || m_ui->runs->selectedItems().isEmpty() ? nullptr : &m_runs[static_cast<std::size_t>(row)];
}

void RunsPanel::enableButtons() {
    const bool isOne = chosen() != nullptr;
    for (QPushButton* button : {m_ui->show, m_ui->openSetup, m_ui->remove}) {
        button->setEnabled(isOne);
    }
    m_ui->openSetup->setEnabled(isOne && !chosen()->setup.empty());
}

bool RunsPanel::guarded(const char* failed, const std::function<void()>& act) {
    try {
        act();
        return true;
    } catch (const std::exception& failure) {
        QtAlerts(this).beginSheet({failed, failure.what()}, {});
        return false;
    }
}

} // namespace orrery
