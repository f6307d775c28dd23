#pragma once

#include "run/SetupProblem.h"

#include <QTextBrowser>

namespace orrery {

/// What is wrong with a setup, a line each: the line leads to its place, and what would mend it comes after it.
/// Tab goes from link to link, Return follows one. As high as its text, up to some lines; then it scrolls.
class ProblemsView : public QTextBrowser {
    Q_OBJECT

public:
    explicit ProblemsView(QWidget* parent = nullptr);
    void setProblems(SetupProblems problems);
    [[nodiscard]] const SetupProblems& problems() const { return m_problems; }

signals:
    void problemChosen(const orrery::SetupProblem& problem);
    void mendChosen(const orrery::SetupProblem& problem, const orrery::SetupMend& mend);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void follow(const QUrl& link);
    void fitHeight();

    SetupProblems m_problems;
};

} // namespace orrery
