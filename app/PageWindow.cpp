#include "app/PageWindow.h"

#include "app/widgets/WindowLayout.h"
#include "ui_ReleaseNotes.h"

#include <QDesktopServices>
#include <QFile>
#include <QTextBrowser>

namespace orrery {

namespace {

constexpr int pageMargin = 20; // pixels

bool exists(const QUrl& page) {
    return page.scheme() == "qrc" && QFile::exists(":" + page.path());
}

} // namespace

PageWindow::PageWindow(const QString& title, const QUrl& page) : m_ui(std::make_unique<Ui::ReleaseNotes>()) {
    m_ui->setupUi(this);
    resize(sizeOnScreen(size()));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(title);
    setAcceptDrops(true); // of files
    m_browser = qobject_cast<QTextBrowser*>(
        centralWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly).last());
    addAction(m_ui->actionClose);
    connect(m_ui->actionClose, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->back, &QToolButton::clicked, m_browser, &QTextBrowser::backward);
    connect(m_ui->forward, &QToolButton::clicked, m_browser, &QTextBrowser::forward);
    connect(m_browser, &QTextBrowser::backwardAvailable, m_ui->back, &QWidget::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, m_ui->forward, &QWidget::setEnabled);
    connect(m_browser, &QTextBrowser::anchorClicked, this, &PageWindow::followLink);
    connect(m_browser, &QTextBrowser::sourceChanged, this,
            [this] { m_browser->document()->setDocumentMargin(pageMargin); });
    if (exists(page)) m_browser->setSource(page);
}

PageWindow::~PageWindow() = default;

/// Pages of ours open here, the web in its browser; the rest (files of the source tree) is not at hand.
void PageWindow::followLink(const QUrl& link) {
    const QUrl target = m_browser->source().resolved(link);
    if (exists(target)) {
        m_browser->setSource(target);
    } else if (target.scheme().startsWith("http")) {
        QDesktopServices::openUrl(target);
    } else {
        statusBar()->showMessage(tr("%1 is not part of the help.").arg(target.fileName()));
    }
}

} // namespace orrery
