#include "app/RecentDocuments.h"

#include "platform/Files.h"

#include <QByteArray>
#include <QList>
#include <algorithm>
#include <string_view>

namespace orrery {

namespace {

constexpr const char* key = "recentDocuments";
constexpr std::string_view scheme = "file://";

/// The path of a "file://" URL, byte for byte; empty for any other text.
std::string pathOfUrl(const QByteArray& url) {
    if (!url.startsWith(scheme.data())) return {};
    return QByteArray::fromPercentEncoding(url.mid(static_cast<qsizetype>(scheme.size()))).toStdString();
}

} // namespace

std::vector<std::string> RecentDocuments::paths() const {
    std::vector<std::string> found;
    const QByteArray lines = QByteArray::fromStdString(m_defaults.stringForKey(key).value_or(""));
    for (const QByteArray& line : lines.split('\n')) {
        const std::string path = pathOfUrl(line);
        if (!path.empty() && found.size() < longest && fileExists(path)) found.push_back(path);
    }
    return found;
}

void RecentDocuments::note(const std::string& path) {
    const std::string absolute = absolutePath(path);
    std::vector<std::string> all = paths();
    std::erase(all, absolute);
    all.insert(all.begin(), absolute);
    all.resize(std::min(all.size(), longest));
    std::string lines;
    for (const std::string& each : all) {
        lines += fileUrl(each) + '\n';
    }
    m_defaults.setObject(lines, key);
}

void RecentDocuments::clear() {
    m_defaults.setObject(std::nullopt, key);
}

} // namespace orrery
