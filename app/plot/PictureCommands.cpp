#include "app/plot/PictureCommands.h"

#include "platform/Files.h"
#include "platform/Png.h"
#include "platform/qt/QtGlSurface.h"
#include "platform/qt/QtText.h"

#include <QAction>
#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <exception>

namespace orrery {

namespace {

Pixels pixelsOf(const QImage& picture) {
    const QImage packed = picture.convertToFormat(QImage::Format_RGBX8888); // four bytes a pixel leave no padding
    return {packed.width(), packed.height(), {packed.constBits(), packed.constBits() + packed.sizeInBytes()}};
}

QAction* addAction(QWidget& view, const char* name, const QString& icon, const QString& text) {
    auto* action = new QAction(QIcon::fromTheme(icon), text, &view);
    action->setObjectName(name);
    view.addAction(action);
    return action;
}

} // namespace

PictureCommands::PictureCommands(MyDocument& document, QtGlSurface& surface, QObject* parent)
    : QObject(parent), m_document(document), m_surface(surface) {
    QAction* copy = addAction(surface, "actionCopyPicture", "edit-copy", tr("&Copy Picture"));
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, [this] { copyPicture(); });
    QAction* save = addAction(surface, "actionSavePicture", "document-save-as", tr("Save &Picture…"));
    connect(save, &QAction::triggered, this, [this] { savePicture(); });
}

void PictureCommands::copyPicture() {
    QGuiApplication::clipboard()->setImage(m_surface.grabFramebuffer().convertToFormat(QImage::Format_RGB32));
}

void PictureCommands::savePicture() {
    auto* panel = new QFileDialog(m_surface.window(), tr("Save Picture"), {}, tr("PNG pictures (*.png)"));
    panel->setObjectName("savePicturePanel");
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setDefaultSuffix("png");
    panel->selectFile("plot.png");
    panel->setWindowModality(Qt::WindowModal);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    // The picture as it was when it was asked for: the animation goes on behind the panel.
    connect(panel, &QFileDialog::fileSelected, this,
            [this, picture = m_surface.grabFramebuffer()](const QString& path) { writePicture(picture, path); });
    panel->open();
}

void PictureCommands::writePicture(const QImage& picture, const QString& path) {
    try {
        replaceFile(corePath(path), encodePng(pixelsOf(picture)));
    } catch (const std::exception& failure) {
        if (Alerts* alerts = m_document.outlets().alerts) {
            alerts->beginSheet({"The picture was not saved.", failure.what()}, [](std::size_t) {});
        }
    }
}

} // namespace orrery
