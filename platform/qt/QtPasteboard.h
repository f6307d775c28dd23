#pragma once

#include "platform/Pasteboard.h"

#include <QMimeData>
#include <QString>

namespace orrery {

/// A drag's data as a pasteboard. Its types are MIME types private to the application: "application/x-orrery-" and the
/// pasteboard type.
class QtPasteboard : public Pasteboard {
public:
    /// To be written; the data stays the caller's.
    explicit QtPasteboard(QMimeData* data) : m_written(data), m_read(data) {}
    /// To be read only.
    explicit QtPasteboard(const QMimeData* data) : m_read(data) {}

    void declareTypes(const std::vector<std::string>& types) override;
    void setData(std::string_view data, const std::string& type) override;
    [[nodiscard]] std::vector<std::string> types() const override;
    [[nodiscard]] std::string dataForType(const std::string& type) const override;

    [[nodiscard]] static QString mimeType(std::string_view pasteboardType);

private:
    QMimeData* m_written = nullptr;
    const QMimeData* m_read;
};

} // namespace orrery
