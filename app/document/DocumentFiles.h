#pragma once

#include "document/MyDocument.h"
#include "platform/KnownFile.h"
#include "platform/UserDefaults.h"
#include "platform/qt/QtAlerts.h"

#include <QObject>
#include <QString>
#include <functional>
#include <string>
#include <vector>

namespace orrery {

/// A document's file as its window shows and asks about it: name and title, saving, reverting, and what is asked before
/// the window may close. All questions are sheets of the window. Owned by the window.
class DocumentFiles : public QObject {
    Q_OBJECT

public:
    using Answer = std::function<void(bool)>; // called once, maybe before the call returns

    DocumentFiles(MyDocument& document, QWidget& window, QtAlerts& alerts, UserDefaults& defaults);

    /// What the document is called without a file. Those of one name are told apart by a number from 1; 0 stands for
    /// one with a file.
    void setUntitledName(const QString& name, int number);
    [[nodiscard]] const QString& untitledName() const { return m_untitledName; }
    [[nodiscard]] int untitledNumber() const { return m_document.file().path() ? 0 : m_untitledNumber; }
    [[nodiscard]] QString displayName() const;
    void setTitleShowsFolder(bool shows); // when another window's file has the same name
    void updateTitle();
    /// Who knows whether another window has a path's file open, so that saving under that name is refused.
    void setOpenElsewhere(std::function<bool(const std::string&)> isOpen) { m_isOpenElsewhere = std::move(isOpen); }

    void save(Answer done); // an untitled document asks for a name
    void saveAs(Answer done);
    void revert();
    /// Claims the file that was read, and says so when another Orrery has it open or when it is not a setup.
    void tellOfFile();

    /// Neither unsaved changes nor a run would be lost.
    [[nodiscard]] bool mayCloseUnasked() const;
    /// Asks about the run and the changes, as far as there are any; Save saves. It closes nothing.
    void askBeforeClosing(Answer mayClose);

signals:
    void saved(); // or reverted: the file and the document agree

private:
    void write(const std::string& path, const Answer& done);
    void writeUnder(const std::string& path, const Answer& done);
    void writeOver(const std::string& path, const KnownFile& known, Answer done);
    void revertToFile();
    void askAboutRun();
    void askAboutChanges();
    void answerClosing(bool mayClose);
    void tell(const QString& message, const std::string& reason);

    MyDocument& m_document;
    QWidget& m_window;
    QtAlerts& m_alerts;
    UserDefaults& m_defaults;
    std::function<bool(const std::string&)> m_isOpenElsewhere;
    std::vector<Answer> m_closeAnswers; // wait for the question that is being asked
    QString m_untitledName;
    int m_untitledNumber = 1;
    bool m_titleShowsFolder = false;
};

} // namespace orrery
