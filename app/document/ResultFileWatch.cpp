#include "app/document/ResultFileWatch.h"

#include "platform/qt/QtText.h"

#include <QFileInfo>
#include <QSet>
#include <chrono>

namespace orrery {

namespace {

constexpr qsizetype mostDirectories = 32; // the system has few watches for all programs together

QSet<QString> directoriesOf(const std::vector<std::string>& files) {
    QSet<QString> directories;
    std::string last;
    for (const std::string& file : files) {
        std::string directory = file.substr(0, file.rfind('/') + 1);
        if (directory.empty() || directory == last) continue; // long lists are mostly of one directory
        if (directories.size() == mostDirectories) break;
        last = std::move(directory);
        const QString path = qtText(last);
        if (QFileInfo(path).isDir()) directories.insert(path);
    }
    return directories;
}

} // namespace

ResultFileWatch::ResultFileWatch(QObject* parent) : QObject(parent) {
    m_pause.setSingleShot(true);
    m_pause.setInterval(std::chrono::milliseconds(200));
    connect(&m_pause, &QTimer::timeout, this, &ResultFileWatch::filesChanged);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, [this] {
        if (!m_pause.isActive()) m_pause.start();
    });
}

void ResultFileWatch::watch(const std::vector<std::string>& files) {
    const QStringList present = m_watcher.directories();
    QSet<QString> wanted = directoriesOf(files);
    QStringList unwanted;
    for (const QString& directory : present) {
        if (!wanted.remove(directory)) unwanted << directory;
    }
    if (!unwanted.isEmpty()) m_watcher.removePaths(unwanted);
    if (!wanted.isEmpty()) m_watcher.addPaths(QStringList(wanted.begin(), wanted.end()));
}

} // namespace orrery
