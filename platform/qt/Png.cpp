#include "platform/Png.h"

#include "platform/values/OrreryError.h"

#include <QBuffer>
#include <QImage>

namespace orrery {

std::string encodePng(const Pixels& pixels) {
    const QImage image(pixels.rgba.data(), pixels.width, pixels.height, qsizetype{pixels.width} * 4,
                       QImage::Format_RGBX8888);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (image.isNull() || !image.convertToFormat(QImage::Format_RGB888).save(&buffer, "PNG")) {
        throw OrreryError("The picture cannot be written as a PNG file.", {}, "Choose a smaller size.");
    }
    return buffer.data().toStdString();
}

} // namespace orrery
