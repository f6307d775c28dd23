#include "log/qt/LogPanel.h"

#include "log/LogFile.h"
#include "log/qt/LogView.h"
#include "platform/qt/QtAlerts.h"
#include "platform/qt/QtText.h"
#include "platform/qt/QtWaitPanel.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QToolButton>
#include <exception>

namespace orrery {
namespace {

constexpr qsizetype longestProposal = 100;

QToolButton* addButton(QWidget* bar, const char* name, const QString& accessibleName, const QString& toolTip) {
    auto* button = new QToolButton(bar);
    button->setObjectName(name);
    button->setAccessibleName(accessibleName);
    button->setToolTip(toolTip);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    bar->layout()->addWidget(button);
    return button;
}

} // namespace

LogPanel::LogPanel(QWidget* parent)
    : QWidget(parent), m_view(new LogView(this)), m_findBar(new QWidget(this)), m_field(new QLineEdit(m_findBar)),
      m_status(new QLabel(m_findBar)) {
    m_view->setObjectName("statusView");
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_findBar);
    makeFindBar();
    connect(m_view, &LogView::findRequested, this, &LogPanel::showFind);
    connect(m_view, &LogView::saveRequested, this, &LogPanel::saveAs);
    connect(m_view, &LogView::noticed, this, [this](const QString& message) { tell(message, {}); });
    connect(m_view, &LogView::searchFinished, this,
            [this](bool found) { m_status->setText(found ? QString() : tr("No match")); });
}

void LogPanel::makeFindBar() {
    auto* layout = new QHBoxLayout(m_findBar);
    layout->setContentsMargins(4, 4, 4, 4);
    m_findBar->setObjectName("logFindBar");
    m_findBar->hide();
    m_field->setObjectName("logFindField");
    m_field->setAccessibleName(tr("Text to find in the log"));
    m_field->setToolTip(tr("Text to find in the log (Ctrl+F)"));
    m_field->setPlaceholderText(tr("Find in the log"));
    m_field->setClearButtonEnabled(true);
    m_field->setMaximumWidth(320);
    layout->addWidget(m_field, 1);
    auto* previous =
        addButton(m_findBar, "logFindPrevious", tr("Find Previous"), tr("Find the previous match (Shift+F3)"));
    previous->setArrowType(Qt::UpArrow);
    auto* next = addButton(m_findBar, "logFindNext", tr("Find Next"), tr("Find the next match (F3)"));
    next->setArrowType(Qt::DownArrow);
    m_status->setObjectName("logFindStatus");
    m_status->setAccessibleName(tr("Result of the search"));
    layout->addWidget(m_status, 1);
    auto* close = addButton(m_findBar, "logFindClose", tr("Close the Find Bar"), tr("Close the find bar (Esc)"));
    close->setText("✕");
    connect(m_field, &QLineEdit::textChanged, this, [this] { find(FindStart::Here); });
    connect(previous, &QToolButton::clicked, this, [this] { find(FindStart::Previous); });
    connect(next, &QToolButton::clicked, this, [this] { find(FindStart::Next); });
    connect(close, &QToolButton::clicked, this, &LogPanel::hideFind);
}

void LogPanel::showFind() {
    m_findBar->show();
    const QString selected = m_view->selectedLength() <= longestProposal ? m_view->selectedText() : QString();
    if (!selected.isEmpty() && !selected.contains('\n')) m_field->setText(selected);
    m_field->selectAll();
    m_field->setFocus(Qt::ShortcutFocusReason);
}

void LogPanel::hideFind() {
    m_view->cancelFind();
    m_status->clear();
    m_findBar->hide();
    m_view->setFocus(Qt::OtherFocusReason);
}

void LogPanel::find(FindStart start) {
    m_status->setText(m_field->text().isEmpty() ? QString() : tr("Searching…"));
    m_view->find(m_field->text(), start);
}

/// Keys that neither the view nor the field has taken, before the window's menus get them.
bool LogPanel::event(QEvent* event) {
    const bool isKey = event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress;
    if (isKey && handleKey(*event)) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

bool LogPanel::handleKey(QEvent& event) {
    const auto& key = static_cast<QKeyEvent&>(event);  // NOLINT(cppcoreguidelines-pro-type-static-cast-downcast)
    const bool act = event.type() == QEvent::KeyPress; // else it only says that the key will be taken
    const bool isReturn = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
    const bool toFind = key.key() == Qt::Key_F3 || (isReturn && m_field->hasFocus());
    const bool bar = m_findBar->isVisible();
    if (key.matches(QKeySequence::Find) || (toFind && (!bar || m_field->text().isEmpty()))) {
        if (act) showFind();
    } else if (toFind) {
        if (act) find(key.modifiers().testFlag(Qt::ShiftModifier) ? FindStart::Previous : FindStart::Next);
    } else if (key.key() == Qt::Key_Escape && bar) {
        if (act) hideFind();
    } else {
        return false;
    }
    return true;
}

void LogPanel::saveAs() {
    auto* dialog = new QFileDialog(this, tr("Save Log As"));
    dialog->setObjectName("logSaveDialog");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters({tr("Text files (*.txt *.log)"), tr("All files (*)")});
    dialog->setDefaultSuffix("txt");
    connect(dialog, &QFileDialog::fileSelected, this, &LogPanel::saveTo, Qt::QueuedConnection); // once it is closed
    dialog->open();
}

void LogPanel::saveTo(const QString& path) {
    try {
        QtWaitPanel panel(window());
        (void)saveLog(m_view->logText(), corePath(path), panel);
    } catch (const std::exception& error) {
        tell(tr("The log could not be saved."), error.what());
    }
}

void LogPanel::tell(const QString& message, const std::string& details) {
    QtAlerts(window()).beginSheet({coreText(message), details}, {});
}

} // namespace orrery
