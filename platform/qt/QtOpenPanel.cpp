#include "platform/qt/QtOpenPanel.h"

#include "platform/qt/QtText.h"

#include <QFileDialog>
#include <utility>

namespace orrery {

void QtOpenPanel::beginSheet(const OpenPanelRequest& request, std::function<void(const std::string&)> chosen) {
    auto* panel = new QFileDialog(m_window, m_title); // deletes itself when closed
    panel->setObjectName("openPanel");
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFile);
    QStringList patterns;
    for (const std::string& type : request.fileTypes) {
        patterns << "*." + qtText(type);
    }
    if (!patterns.isEmpty()) panel->setNameFilter(QString("%1 (%2)").arg(m_kind, patterns.join(' ')));
    QObject::connect(panel, &QFileDialog::fileSelected, panel,
                     [chosen = std::move(chosen)](const QString& file) { chosen(corePath(file)); });
    panel->open();
}

} // namespace orrery
