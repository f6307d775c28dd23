#include "app/document/OverwriteQuestion.h"

#include "app/widgets/FileNames.h"
#include "platform/qt/QtText.h"

namespace orrery {

std::optional<AlertText> overwriteQuestion(const KnownFile& known, const std::string& path) {
    const std::string name = "“" + coreText(shownFileName(path)) + "”";
    const KnownFile::Change change = known.changeAt(path);
    AlertText question{"", "", {"Save", "Cancel", "Save As…"}};
    if (change == KnownFile::Change::Missing) {
        question.message = name + " is no longer there.";
        question.informative =
            "It was removed, renamed or moved. Saving creates it again in " + coreText(shownFolder(path)) + ".";
    } else if (known.isClaimedElsewhere(path)) {
        question.message = name + " is open in another Orrery.";
        question.informative =
            change == KnownFile::Change::None
                ? "Saving replaces the file, and what is saved there later replaces yours."
                : "It has been saved there in the meantime. Saving replaces that with the contents of this window.";
    } else if (change == KnownFile::Change::Contents) {
        question.message = name + " was changed by another program.";
        question.informative = "Saving replaces what that program wrote with the contents of this window.";
    } else {
        return std::nullopt;
    }
    return question;
}

} // namespace orrery
