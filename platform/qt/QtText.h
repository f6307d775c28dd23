#pragma once

#include <QFile>
#include <QString>
#include <string>
#include <string_view>

namespace orrery {

/// The core's UTF-8 text as Qt has it; bytes that are none become replacement characters.
inline QString qtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string coreText(const QString& text) {
    return text.toStdString();
}

/// Paths are bytes in the core and text in Qt.
inline QString qtPath(const std::string& path) {
    return QFile::decodeName(path.c_str());
}
inline std::string corePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

} // namespace orrery
