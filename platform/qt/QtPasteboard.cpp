#include "platform/qt/QtPasteboard.h"

#include "platform/qt/QtText.h"

namespace orrery {

namespace {

const QString prefix = "application/x-orrery-";

} // namespace

QString QtPasteboard::mimeType(std::string_view pasteboardType) {
    return prefix + qtText(pasteboardType);
}

void QtPasteboard::declareTypes(const std::vector<std::string>& types) {
    if (m_written == nullptr) return;
    m_written->clear();
    for (const std::string& type : types) {
        m_written->setData(mimeType(type), {});
    }
}

void QtPasteboard::setData(std::string_view data, const std::string& type) {
    if (m_written == nullptr) return;
    m_written->setData(mimeType(type), QByteArray(data.data(), static_cast<qsizetype>(data.size())));
}

std::vector<std::string> QtPasteboard::types() const {
    std::vector<std::string> found;
    for (const QString& format : m_read->formats()) {
        if (format.startsWith(prefix)) found.push_back(coreText(format.mid(prefix.size())));
    }
    return found;
}

std::string QtPasteboard::dataForType(const std::string& type) const {
    return m_read->data(mimeType(type)).toStdString();
}

} // namespace orrery
