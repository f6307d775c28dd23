#include "app/document/DocumentFiles.h"

#include "app/document/FilePanels.h"
#include "app/document/OverwriteQuestion.h"
#include "app/widgets/FileNames.h"
#include "app/widgets/PendingEdit.h"
#include "platform/Files.h"
#include "platform/qt/QtText.h"

#include <QWidget>
#include <exception>
#include <utility>

namespace orrery {

namespace {

/// A file's name as it is shown, which is escaped already.
std::string quotedName(const QString& name) {
    return "“" + coreText(name) + "”";
}

} // namespace

DocumentFiles::DocumentFiles(MyDocument& document, QWidget& window, QtAlerts& alerts, UserDefaults& defaults)
    : m_document(document), m_window(window), m_alerts(alerts), m_defaults(defaults) {
    m_document.setSaveHandler([this](Answer didSave) { save(std::move(didSave)); });
}

void DocumentFiles::setUntitledName(const QString& name, int number) {
    m_untitledName = name;
    m_untitledNumber = number;
    updateTitle();
}

QString DocumentFiles::displayName() const {
    if (const auto path = m_document.file().path()) return shownFileName(*path);
    return m_untitledNumber < 2 ? m_untitledName : QString("%1 %2").arg(m_untitledName).arg(m_untitledNumber);
}

void DocumentFiles::setTitleShowsFolder(bool shows) {
    m_titleShowsFolder = shows;
    updateTitle();
}

void DocumentFiles::updateTitle() {
    const auto path = m_document.file().path();
    QString title = path && m_titleShowsFolder ? shownNameAndFolder(*path) : displayName();
    title.replace("[*]", "[*][*]"); // doubled, it stands for itself
    m_window.setWindowTitle(title + "[*]");
    m_window.setWindowModified(m_document.setup().hasUnsavedChanges());
}

void DocumentFiles::save(Answer done) {
    commitPendingEdit(m_window);
    const auto path = m_document.file().path();
    if (!path) {
        saveAs(std::move(done));
    } else {
        writeOver(*path, m_document.file().known(), std::move(done));
    }
}

void DocumentFiles::saveAs(Answer done) {
    commitPendingEdit(m_window);
    const std::string suggestion = m_document.file().path().value_or(coreText(displayName()) + ".orrery");
    beginSaveSetupPanel(&m_window, m_defaults, suggestion, [this, done = std::move(done)](const std::string& path) {
        if (path.empty()) {
            done(false);
        } else {
            writeUnder(path, done);
        }
    });
}

void DocumentFiles::writeUnder(const std::string& path, const Answer& done) {
    if (m_isOpenElsewhere && m_isOpenElsewhere(path)) {
        tell(tr("“%1” is open in another window.").arg(shownFileName(path)),
             "Choose another name, or close that window first.");
        done(false);
        return;
    }
    const auto own = m_document.file().path();
    writeOver(path, own && isSameFile(*own, path) ? m_document.file().known() : KnownFile(), done);
}

void DocumentFiles::write(const std::string& path, const Answer& done) {
    bool written = false;
    try {
        m_document.saveToFile(path);
        written = true;
    } catch (const std::exception& failure) {
        tell(tr("“%1” could not be saved.").arg(shownFileName(path)), failure.what());
    }
    if (written) {
        m_document.file().known().claim();
        emit saved();
    }
    done(written);
}

/// Asks first where others would be surprised.
void DocumentFiles::writeOver(const std::string& path, const KnownFile& known, Answer done) {
    const auto question = overwriteQuestion(known, path);
    if (!question) {
        write(path, done);
        return;
    }
    m_alerts.beginSheet(*question, [this, path, done = std::move(done)](std::size_t button) {
        switch (static_cast<OverwriteAnswer>(button)) {
        case OverwriteAnswer::Save:
            write(path, done);
            break;
        case OverwriteAnswer::SaveAs:
            saveAs(done);
            break;
        default:
            done(false);
        }
    });
}

void DocumentFiles::revert() {
    commitPendingEdit(m_window);
    if (!m_document.file().path()) return;
    if (!m_document.setup().hasUnsavedChanges()) {
        revertToFile();
        return;
    }
    m_alerts.beginSheet({"Do you want to revert to the saved version of " + quotedName(displayName()) + "?",
                         "The changes that you made since then will be lost.",
                         {"Revert", "Cancel"}},
                        [this](std::size_t button) {
                            if (button == 0) revertToFile();
                        });
}

void DocumentFiles::tellOfFile() {
    if (const auto path = m_document.file().path(); path && m_document.file().known().isClaimedElsewhere(*path)) {
        tell(tr("“%1” is open in another Orrery.").arg(displayName()),
             "Change it in one of the two only: whatever is saved last replaces the rest.");
    }
    m_document.file().known().claim();
    if (m_document.file().unparsedFault().empty()) return;
    tell(tr("“%1” is not a setup file.").arg(displayName()),
         m_document.file().unparsedFault() +
             "\nThe window shows an empty setup. When you save it, the old file is kept beside "
             "it, with “~” after its name.");
}

void DocumentFiles::revertToFile() {
    try {
        m_document.revertToFile();
        emit saved();
        tellOfFile();
    } catch (const std::exception& failure) {
        tell(tr("“%1” could not be read again.").arg(displayName()), failure.what());
    }
}

bool DocumentFiles::mayCloseUnasked() const {
    return !m_document.setup().hasUnsavedChanges() && m_document.runControl().state() == RunControl::State::Idle;
}

void DocumentFiles::askBeforeClosing(Answer mayClose) {
    m_closeAnswers.push_back(std::move(mayClose));
    if (m_closeAnswers.size() == 1) askAboutRun();
}

void DocumentFiles::askAboutRun() {
    if (m_document.runControl().state() == RunControl::State::Idle) {
        askAboutChanges();
        return;
    }
    m_alerts.beginSheet({"A simulation of " + quotedName(displayName()) + " is running.",
                         "Closing the document aborts it, and its results will not be read.",
                         {"Abort and Close", "Cancel"}},
                        [this](std::size_t button) { button == 0 ? askAboutChanges() : answerClosing(false); });
}

void DocumentFiles::askAboutChanges() {
    commitPendingEdit(m_window);
    if (!m_document.setup().hasUnsavedChanges()) {
        answerClosing(true);
        return;
    }
    m_alerts.beginSheet({"Do you want to save the changes made to " + quotedName(displayName()) + "?",
                         "Your changes will be lost if you don't save them.",
                         {"Save", "Cancel", "Don't Save"},
                         Severity::Warning,
                         0},
                        [this](std::size_t button) {
                            if (button == 0) {
                                save([this](bool saved) { answerClosing(saved); });
                            } else {
                                answerClosing(button == 2);
                            }
                        });
}

void DocumentFiles::answerClosing(bool mayClose) {
    for (const Answer& answer : std::exchange(m_closeAnswers, {})) {
        answer(mayClose);
    }
}

void DocumentFiles::tell(const QString& message, const std::string& reason) {
    m_alerts.beginSheet({coreText(message), reason}, {});
}

} // namespace orrery
