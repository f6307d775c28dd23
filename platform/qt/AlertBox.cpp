#include "platform/qt/AlertBox.h"

#include "platform/qt/QtText.h"

#include <QApplication>
#include <QFontMetrics>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <algorithm>
#include <utility>

namespace orrery {
namespace {

constexpr int widestInCharacters = 72; // a line that is longer is tiring to read

QMessageBox::Icon iconOf(Severity severity) {
    switch (severity) {
    case Severity::Information:
        return QMessageBox::Information;
    case Severity::Question:
        return QMessageBox::Question;
    case Severity::Critical:
        return QMessageBox::Critical;
    case Severity::Warning:
        break;
    }
    return QMessageBox::Warning;
}

/// "&Save": the first letter that no button before it has.
QString withLetter(QString title, QString& taken) {
    title.replace('&', "&&");
    for (qsizetype i = 0; i < title.size(); ++i) {
        if (!title[i].isLetter() || taken.contains(title[i], Qt::CaseInsensitive)) continue;
        taken += title[i];
        return title.insert(i, '&');
    }
    return title;
}

/// Escape loses nothing: it cancels, or says that a message was read.
std::size_t escapeNumber(const AlertText& alert) {
    const auto cancel = std::ranges::find(alert.buttons, "Cancel");
    return static_cast<std::size_t>(cancel - alert.buttons.begin()) - (cancel == alert.buttons.end() ? 1 : 0);
}

/// Lets a line break within words that fill a line, a path's after its slashes.
QString breakable(QString text) {
    static const QRegularExpression longWord(QString("\\S{%1,}").arg(widestInCharacters));
    static const QRegularExpression places("(/|[^\\s/]{32})");
    for (auto words = longWord.globalMatch(text); words.hasNext();) {
        const QString word = words.next().captured();
        QString broken = word;
        text.replace(word, broken.replace(places, "\\1\u200b"));
    }
    return text;
}

void tell(const std::vector<AlertBox::Answered>& all, std::size_t number) {
    for (const AlertBox::Answered& answered : all)
        if (answered) answered(number);
}

int widestLine(const QLabel& label) {
    int widest = 0;
    for (const QString& line : label.text().split('\n'))
        widest = std::max(widest, label.fontMetrics().horizontalAdvance(line));
    return widest;
}

} // namespace

AlertBox::AlertBox(QWidget* window, const AlertText& text) : QMessageBox(window) {
    setObjectName("alert");
    setWindowTitle(QApplication::applicationDisplayName());
    setTextFormat(Qt::PlainText);
    setAlert(text);
}

void AlertBox::setAlert(const AlertText& alert) {
    const bool sameButtons = !m_buttons.empty() && alert.buttons == m_alert.buttons;
    m_alert = alert;
    setIcon(iconOf(alert.severity));
    setText(breakable(qtText(alert.message)));
    setInformativeText(breakable(qtText(alert.informative)));
    if (!sameButtons) addButtons();
    setEscapeButton(m_buttons[escapeNumber(alert)]);
    setDefaultButton(m_buttons[alert.safeButton.value_or(escapeNumber(alert))]);
}

/// In the order given, whatever the desktop's habit: one role keeps one order.
void AlertBox::addButtons() {
    for (QPushButton* button : std::exchange(m_buttons, {})) {
        removeButton(button);
        button->setObjectName({});
        button->deleteLater(); // it may be what is being clicked
    }
    QString taken;
    for (const std::string& title : m_alert.buttons) {
        m_buttons.push_back(addButton(withLetter(qtText(title), taken), QMessageBox::ActionRole));
        m_buttons.back()->setObjectName(qtText("alertButton" + title));
    }
}

void AlertBox::replace(const AlertText& alert, Answered answered) {
    const std::size_t escape = escapeNumber(m_alert);
    const bool unanswered = m_alert.buttons.size() > 1 || alert.buttons.size() > 1;
    const auto before = unanswered ? std::exchange(m_answered, {}) : std::vector<Answered>();
    m_answered.push_back(std::move(answered));
    setAlert(alert);
    fitWidth();
    tell(before, escape);
}

void AlertBox::beginSheet(Answered answered) {
    m_answered.push_back(std::move(answered));
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    connect(this, &QMessageBox::finished, this, [this] { tell(std::exchange(m_answered, {}), answer()); });
}

std::size_t AlertBox::answer() const {
    const auto found = std::ranges::find(m_buttons, clickedButton());
    return found == m_buttons.end() ? escapeNumber(m_alert) : static_cast<std::size_t>(found - m_buttons.begin());
}

void AlertBox::showEvent(QShowEvent* event) {
    fitWidth();
    QMessageBox::showEvent(event);
}

/// The box itself would make a column of short lines from a long text.
void AlertBox::fitWidth() {
    const int widest =
        std::min(fontMetrics().averageCharWidth() * widestInCharacters, screen()->availableSize().width() / 2);
    for (const char* name : {"qt_msgbox_label", "qt_msgbox_informativelabel"}) {
        auto* label = findChild<QLabel*>(name);
        if (label == nullptr) continue;
        label->setWordWrap(true);
        label->setMinimumWidth(std::min(widestLine(*label), widest));
    }
}

} // namespace orrery
