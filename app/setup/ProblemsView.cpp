#include "app/setup/ProblemsView.h"

#include "platform/qt/QtText.h"

#include <QEvent>
#include <QStringList>
#include <QTextDocument>
#include <QUrl>
#include <algorithm>
#include <utility>

namespace orrery {

namespace {

/// A link is named by the numbers of its problem and mend: "3" or "3/0".
QString link(const QString& target, const std::string& words) {
    return QString("<a href=\"%1\">%2</a>").arg(target, qtText(words).toHtmlEscaped());
}

QString lineOf(const SetupProblem& problem, std::size_t number) {
    const QString target = QString::number(number);
    QString line = link(target, problem.words);
    for (std::size_t mend = 0; mend < problem.mends.size(); ++mend) {
        line += " &nbsp;[" + link(QString("%1/%2").arg(target).arg(mend), problem.mends[mend].label) + "]";
    }
    return line;
}

} // namespace

ProblemsView::ProblemsView(QWidget* parent) : QTextBrowser(parent) {
    setOpenLinks(false);
    setFocusPolicy(Qt::TabFocus); // a click leaves what is being typed alone until its line is known
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    document()->setDocumentMargin(0);
    viewport()->setAutoFillBackground(false);
    connect(this, &QTextBrowser::anchorClicked, this, &ProblemsView::follow);
}

void ProblemsView::setProblems(SetupProblems problems) {
    if (problems == m_problems) return; // the link that has the keyboard keeps it
    m_problems = std::move(problems);
    QStringList lines;
    for (std::size_t number = 0; number < m_problems.shown.size(); ++number) {
        lines << lineOf(m_problems.shown[number], number);
    }
    if (m_problems.more > 0) lines << qtText(m_problems.moreWords());
    setHtml(lines.join("<br>"));
    fitHeight();
}

void ProblemsView::follow(const QUrl& link) {
    const QStringList numbers = link.toString().split('/');
    const std::size_t number = numbers.front().toULongLong();
    if (number >= m_problems.shown.size()) return;
    const SetupProblem problem = m_problems.shown[number]; // what follows may change the list
    const std::size_t mend = numbers.value(1).toULongLong();
    if (numbers.size() < 2) {
        emit problemChosen(problem);
    } else if (mend < problem.mends.size()) {
        emit mendChosen(problem, problem.mends[mend]);
    }
}

void ProblemsView::resizeEvent(QResizeEvent* event) {
    QTextBrowser::resizeEvent(event);
    fitHeight();
}

void ProblemsView::changeEvent(QEvent* event) {
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) fitHeight();
}

/// Qt would go from the view backwards to its last link first, away from where the keyboard came from.
bool ProblemsView::focusNextPrevChild(bool next) {
    const bool atLink = textCursor().hasSelection();
    if (next || atLink) return QTextBrowser::focusNextPrevChild(next);
    return QTextEdit::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call): past the browser's own
}

void ProblemsView::fitHeight() {
    constexpr int mostLines = 5;
    const int text = static_cast<int>(document()->size().height()) + 1;
    const int height = std::min(text, mostLines * fontMetrics().lineSpacing()) + 2 * frameWidth();
    if (height != minimumHeight()) setFixedHeight(height);
}

} // namespace orrery
