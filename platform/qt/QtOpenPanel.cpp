#include "platform/qt/QtOpenPanel.h"

#include "platform/qt/QtText.h"

#include <QFileDialog>
#include <utility>

namespace orrery {

void QtOpenPanel::beginSheet(const OpenPanelRequest& request, std::function<void(const std::string&)> chosen) {
    auto* panel = new QFileDialog(m_window, m_title, m_directory); // deletes itself when closed
    panel->setObjectName("openPanel");
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(request.canChooseDirectories      ? QFileDialog::Directory
                       : request.allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                         : QFileDialog::ExistingFile);
    QStringList patterns;
    for (const std::string& type : request.fileTypes) {
        patterns << "*." + qtText(type);
    }
    if (!patterns.isEmpty()) panel->setNameFilter(QString("%1 (%2)").arg(m_kind, patterns.join(' ')));
    QObject::connect(panel, &QFileDialog::filesSelected, panel, [chosen = std::move(chosen)](const QStringList& files) {
        for (const QString& file : files) {
            chosen(corePath(file));
        }
    });
    panel->open();
}

} // namespace orrery
