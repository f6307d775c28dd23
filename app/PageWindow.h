#pragma once

#include <QMainWindow>
#include <QUrl>
#include <memory>

class QTextBrowser;

QT_BEGIN_NAMESPACE
namespace Ui {
class ReleaseNotes;
} // namespace Ui
QT_END_NAMESPACE

namespace orrery {

/// A window that shows a page of the application's resources and what it links to: release notes and help.
class PageWindow : public QMainWindow {
    Q_OBJECT

public:
    /// A missing page leaves the window empty. It deletes itself when closed.
    PageWindow(const QString& title, const QUrl& page);
    ~PageWindow() override;

private:
    void followLink(const QUrl& link);

    std::unique_ptr<Ui::ReleaseNotes> m_ui;
    QTextBrowser* m_browser = nullptr; // the last part of the window's contents
};

} // namespace orrery
