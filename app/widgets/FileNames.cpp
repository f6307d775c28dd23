#include "app/widgets/FileNames.h"

#include "platform/Files.h"
#include "platform/qt/QtText.h"
#include "platform/values/Quoted.h"

#include <QDir>
#include <filesystem>

namespace orrery {

namespace {

QString shown(const std::string& text) {
    return qtText(messageText(text));
}

} // namespace

QString shownFileName(const std::string& path) {
    return shown(std::filesystem::path(path).filename().string());
}

QString shownPath(const std::string& path) {
    const std::string home = corePath(QDir::homePath());
    if (home.size() > 1 && (path == home || path.starts_with(home + "/"))) return shown("~" + path.substr(home.size()));
    return shown(path);
}

QString shownFolder(const std::string& path) {
    return shownPath(std::filesystem::path(absolutePath(path)).parent_path().string());
}

QString shownNameAndFolder(const std::string& path) {
    return shownFileName(path) + QString::fromUtf8(" — ") + shownFolder(path);
}

bool isSameFile(const std::string& path, const std::string& other) {
    std::error_code ignored; // what is not there is not another file either
    return absolutePath(path) == absolutePath(other) || std::filesystem::equivalent(path, other, ignored);
}

} // namespace orrery
