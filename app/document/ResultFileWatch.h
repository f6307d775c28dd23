#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <string>
#include <vector>

namespace orrery {

/// Tells when files may have come or gone: it watches the directories that hold them, also while the files are not
/// there. A directory in which much happens is reported a few times a second. On a disk of another machine it may tell
/// nothing; what comes back to the front looks for itself.
class ResultFileWatch : public QObject {
    Q_OBJECT

public:
    explicit ResultFileWatch(QObject* parent = nullptr);
    /// Watches these files' directories and no others.
    void watch(const std::vector<std::string>& files);

signals:
    void filesChanged();

private:
    QFileSystemWatcher m_watcher;
    QTimer m_pause;
};

} // namespace orrery
