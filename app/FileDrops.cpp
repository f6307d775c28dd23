#include "app/FileDrops.h"

#include "platform/qt/QtText.h"

#include <QApplication>
#include <QDropEvent>
#include <QMainWindow>
#include <QMimeData>
#include <QUrl>

namespace orrery {

namespace {

std::vector<std::string> localFiles(const QMimeData& data) {
    std::vector<std::string> files;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile()) files.push_back(corePath(url.toLocalFile()));
    }
    return files;
}

bool isDragOverMainWindow(const QObject* object, const QEvent* event) {
    if (event->type() != QEvent::DragEnter && event->type() != QEvent::DragMove && event->type() != QEvent::Drop) {
        return false;
    }
    const auto* widget = qobject_cast<const QWidget*>(object);
    return widget != nullptr && qobject_cast<const QMainWindow*>(widget->window()) != nullptr;
}

} // namespace

FileDrops::FileDrops(const std::function<void(const Files&)>& dropped) {
    connect(this, &FileDrops::filesDropped, this, dropped, Qt::QueuedConnection); // when the drag is over
    qApp->installEventFilter(this);
}

bool FileDrops::eventFilter(QObject* object, QEvent* event) {
    if (!isDragOverMainWindow(object, event)) return false;
    auto* drop = static_cast<QDropEvent*>(event); // the base of all three
    const std::vector<std::string> files = localFiles(*drop->mimeData());
    if (files.empty()) return false;
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (event->type() == QEvent::Drop) emit filesDropped(files);
    return true;
}

} // namespace orrery
