#pragma once

#include "document/MyDocument.h"

#include <QImage>
#include <QObject>
#include <QString>

class QAction;

namespace orrery {

class QtGlSurface;

/// What can be done with the plot's picture: copy it, save it as a PNG file. The commands are the surface's own
/// actions.
class PictureCommands : public QObject {
    Q_OBJECT

public:
    PictureCommands(MyDocument& document, QtGlSurface& surface, QObject* parent);

    void copyPicture();
    void savePicture(); // asks for the file

private:
    void writePicture(const QImage& picture, const QString& path);

    MyDocument& m_document;
    QtGlSurface& m_surface;
};

} // namespace orrery
