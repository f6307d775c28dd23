#include "app/setup/SetupTab.h"

#include "app/setup/EditCommands.h"
#include "app/setup/ModelOutlineView.h"
#include "app/setup/NodeIcons.h"
#include "app/setup/PortTableView.h"
#include "app/setup/ProblemsView.h"
#include "app/setup/ShowPlace.h"
#include "app/widgets/EscapeFilter.h"
#include "app/widgets/PendingEdit.h"
#include "app/widgets/Scrollable.h"
#include "app/widgets/UndoPassThrough.h"
#include "document/setup/SetupForm.h"
#include "platform/qt/OptionalDateEdit.h"
#include "platform/qt/QtText.h"
#include "ui_MainMenu.h"
#include "ui_MyDocument.h"

#include <algorithm>
#include <functional>

namespace orrery {

namespace {

/// The outline as the document knows it: when its tree is another one, other ports of the lists are in it.
class ModelOutlet : public ListView {
public:
    explicit ModelOutlet(Ui::MyDocument& ui) : m_ui(ui) {}

    void reloadData() override {
        m_ui.outlineView->reloadData();
        for (PortTableView* table : {m_ui.outputTable, m_ui.inputTable, m_ui.stepperTable}) {
            table->reloadData();
        }
    }
    void selectRows(const std::vector<std::size_t>& rows) override { m_ui.outlineView->selectRows(rows); }

private:
    Ui::MyDocument& m_ui;
};

} // namespace

SetupTab::SetupTab(MyDocument& document, Ui::MyDocument& ui, Ui::MainMenu& menu)
    : m_document(document), m_ui(ui), m_outline(std::make_unique<ModelOutlet>(ui)) {
    for (const setup_form::Setting& setting : setup_form::settings) {
        if (setting.kind == setup_form::Kind::ModelPath) continue; // chosen, not typed
        auto* field = ui.setupTab->findChild<QLineEdit*>(qtText(setting.key));
        if (field != nullptr) m_settings.push_back({setting.key, field});
    }
    m_ui.outlineView->setDocument(document);
    m_ui.outputTable->setDocument(document, PortList::Outputs);
    m_ui.inputTable->setDocument(document, PortList::Initializations);
    m_ui.stepperTable->setDocument(document, PortList::Steppers);
    m_commands = std::make_unique<EditCommands>(document, ui, menu);
    layOut();
    connectSettings();
    connectTables();
}

/// The window's widgets outlive the document.
SetupTab::~SetupTab() {
    m_ui.outlineView->release();
    for (PortTableView* table : {m_ui.outputTable, m_ui.inputTable, m_ui.stepperTable}) {
        table->release();
    }
}

void SetupTab::addOutlets(DocumentOutlets& outlets) {
    outlets.outlineView = m_outline.get();
    outlets.outputTable = m_ui.outputTable;
    outlets.inputTable = m_ui.inputTable;
    outlets.stepperTable = m_ui.stepperTable;
}

void SetupTab::layOut() {
    makeScrollable(*m_ui.setupTab);
    m_ui.mainSplitter->setStretchFactor(0, 0);
    m_ui.mainSplitter->setStretchFactor(1, 1);
    m_ui.mainSplitter->setSizes({240, 760});
    m_ui.workSplitter->setStretchFactor(0, 1);
    m_ui.workSplitter->setStretchFactor(1, 0);
    m_ui.workSplitter->setSizes({600, 150});
    m_ui.outputTable->setEmptyStateText(tr("Drag output ports here"));
    m_ui.inputTable->setEmptyStateText(tr("Drag input ports here to give them an initial value"));
    m_ui.stepperTable->setEmptyStateText(tr("Drag input ports here to sweep them from start to stop by step"));
    const int iconSize = m_ui.sweepProblems->fontMetrics().height();
    m_ui.sweepProblemsIcon->setPixmap(
        warningIcon().pixmap(QSize(iconSize, iconSize), m_ui.setupTab->devicePixelRatioF()));
}

void SetupTab::connectSettings() {
    for (const Setting& setting : m_settings) {
        letUndoPassThrough(*setting.field);
        letEscapeDo(*setting.field, [this, setting] {
            setting.field->setText(qtText(m_document.theDictionary().textOrEmpty(setting.key)));
        });
        connect(setting.field, &QLineEdit::editingFinished, this, [this, setting] { commit(setting); });
    }
    letEscapeDo(*m_ui.modelFilter, [this] { m_ui.modelFilter->clear(); });
    letKeyDo(*m_ui.modelFilter, Qt::Key_Down, [this] { m_ui.outlineView->enter(); });
    letUndoPassThrough(*m_ui.modelFilter);
    for (QWidget* part : m_ui.startDay->findChildren<QWidget*>()) {
        letUndoPassThrough(*part);
    }
    connect(m_ui.startDay, &OptionalDateEdit::edited, this,
            [this] { m_document.setup().editStartDay(m_ui.startDay->date()); });
    connect(m_ui.selectModel, &QPushButton::clicked, this, [this] { m_document.selectModel(); });
    connect(m_ui.sweepProblems, &ProblemsView::problemChosen, this, [this](const SetupProblem& problem) {
        commitPendingEdit(*m_ui.centralWidget->window());
        showPlace(m_ui, problem.place);
    });
    connect(m_ui.sweepProblems, &ProblemsView::mendChosen, this,
            [this](const SetupProblem& problem, const SetupMend& chosen) { mend(problem, chosen.value); });
    connect(m_ui.modelFilter, &QLineEdit::textChanged, m_ui.outlineView, &ModelOutlineView::setFilter);
}

void SetupTab::connectTables() {
    using Command = void (MyDocument::*)(int);
    const auto connectButtons = [this](QToolButton* add, QToolButton* remove, Command command) {
        connect(add, &QToolButton::clicked, this,
                [document = &m_document, command] { std::invoke(command, document, 0); });
        connect(remove, &QToolButton::clicked, this,
                [document = &m_document, command] { std::invoke(command, document, 1); });
    };
    connectButtons(m_ui.addOutput, m_ui.removeOutput, &MyDocument::addOrRemoveOutput);
    connectButtons(m_ui.addInitialization, m_ui.removeInitialization, &MyDocument::addOrRemoveInitialization);
    connectButtons(m_ui.addStepper, m_ui.removeStepper, &MyDocument::addOrRemoveStepper);
}

/// The field is set anew: what was typed is the document's now, and so is its undo.
void SetupTab::commit(const Setting& setting) {
    if (!setting.field->isModified()) return;
    const QString typed = setting.field->text();
    setting.field->setModified(false);
    m_document.setup().editText(setting.key, coreText(typed));
    setting.field->setText(typed);
}

void SetupTab::refresh() {
    showModelPath();
    showSettings();
    showSweep();
    m_commands->validate();
}

void SetupTab::showModelPath() {
    const QString path = qtText(m_document.theDictionary().textOrEmpty(setup_key::modelPath));
    if (m_ui.modelPath->text() != path) m_ui.modelPath->setText(path);
    m_ui.modelPath->setToolTip(path.isEmpty() ? tr("The model file that is run") : path);
}

void SetupTab::showSettings() {
    for (const Setting& setting : m_settings) {
        if (setting.field->hasFocus() && setting.field->isModified()) continue; // it is being edited
        const QString text = qtText(m_document.theDictionary().textOrEmpty(setting.key));
        if (setting.field->text() != text) setting.field->setText(text);
    }
    const std::optional<Date> startDay = m_document.theDictionary().startDay();
    if (m_ui.startDay->date() != startDay) m_ui.startDay->setDate(startDay);
}

void SetupTab::showSweep() {
    m_ui.sweepSize->setText(qtText(m_document.sweepSummary()));
    showProblems();
}

void SetupTab::showProblems() {
    m_ui.sweepProblems->setProblems(m_document.setupProblems());
    m_ui.problemsPanel->setVisible(!m_ui.sweepProblems->problems().shown.empty());
}

/// What is being typed is taken over first, and may have mended it already.
void SetupTab::mend(const SetupProblem& problem, const std::string& value) {
    commitPendingEdit(*m_ui.centralWidget->window());
    const std::vector<SetupProblem> present = m_document.setupProblems().shown;
    if (std::ranges::find(present, problem) != present.end()) m_document.setup().editPlace(problem.place, value);
    showPlace(m_ui, problem.place);
}

} // namespace orrery
