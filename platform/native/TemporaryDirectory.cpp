#include "platform/TemporaryDirectory.h"

#include "platform/Files.h"
#include "platform/native/SystemCalls.h"
#include "platform/values/OrreryError.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace orrery {
namespace {

constexpr const char* variable = "TMPDIR";

[[noreturn]] void throwUnusable(const std::string& path, const std::string& problem, const std::string& remedy) {
    throw OrreryError("The temporary directory " + problem + ".", {path}, remedy);
}

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

void exportDirectory(const std::string& path) {
    if (setenv(variable, path.c_str(), 1) != 0) throwUnusable(path, "cannot be exported", "Set TMPDIR yourself.");
}

std::string withSlash(std::string path) {
    if (!path.ends_with('/')) path += '/';
    return path;
}

/// The directory that the user chose.
std::string chosenDirectory(const std::string& value) {
    const std::string path = value.starts_with('/') ? value : absolutePath(value);
    struct stat status {};
    const char* const remedy = "Set TMPDIR to a directory that you can write to.";
    if (stat(path.c_str(), &status) != 0) throwUnusable(path, "cannot be used: " + systemReason(errno), remedy);
    if (!S_ISDIR(status.st_mode)) throwUnusable(path, "is not a directory", remedy);
    if (access(path.c_str(), W_OK | X_OK) != 0) {
        throwUnusable(path, "cannot be written to: " + systemReason(errno), remedy);
    }
    if (path != value) exportDirectory(path);
    return withSlash(path);
}

/// Whether nobody else can make or rename something in the directory; what it is a link to counts.
bool isSheltered(const struct stat& status) {
    return S_ISDIR(status.st_mode) && (status.st_mode & S_IWOTH) == 0;
}

/// The runtime directory if it is what it should be: this user's own and writable.
std::optional<std::string> runtimeDirectory() {
    const std::string path = environment("XDG_RUNTIME_DIR");
    struct stat status {};
    if (!path.starts_with('/') || stat(path.c_str(), &status) != 0) return std::nullopt;
    const bool usable = isSheltered(status) && status.st_uid == geteuid() && access(path.c_str(), W_OK | X_OK) == 0;
    return usable ? std::optional(path) : std::nullopt;
}

std::string cacheDirectory() {
    std::string cache = environment("XDG_CACHE_HOME");
    if (cache.starts_with('/')) return cache;
    const std::string home = environment("HOME");
    if (!home.starts_with('/')) {
        throwUnusable("~", "cannot be made: there is neither a runtime directory nor a home directory",
                      "Set TMPDIR or HOME.");
    }
    return withSlash(home) + ".cache";
}

/// Makes the directory and what is missing above it, for this user alone.
void makeDirectories(const std::string& path) {
    if (mkdir(path.c_str(), S_IRWXU) == 0 || errno == EEXIST) return;
    if (errno == ENOENT && path.rfind('/') > 0) {
        makeDirectories(path.substr(0, path.rfind('/')));
        if (mkdir(path.c_str(), S_IRWXU) == 0 || errno == EEXIST) return;
    }
    throwUnusable(path, "cannot be created: " + systemReason(errno),
                  "Set TMPDIR to a directory that you can write to.");
}

struct stat statusOf(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0) return status;
    throwUnusable(path, "cannot be used: " + systemReason(errno), "Set TMPDIR to a directory that you can write to.");
}

/// A directory that nobody else can have prepared or can write to.
void requirePrivate(const std::string& path) {
    const struct stat status = statusOf(path);
    const char* const remedy = "Remove it, or set TMPDIR to a directory of your own.";
    if (S_ISLNK(status.st_mode)) throwUnusable(path, "is a symbolic link", remedy);
    if (!S_ISDIR(status.st_mode)) throwUnusable(path, "is not a directory", remedy);
    if (status.st_uid != geteuid()) throwUnusable(path, "belongs to another user", remedy);
    if ((status.st_mode & 07777U) != S_IRWXU)
        throwUnusable(path, "is open to other users (its mode is not 700)", remedy);
    if (!isSheltered(statusOf(path + "/.."))) {
        throwUnusable(path, "lies where every user can write", "Set TMPDIR to a directory of your own.");
    }
}

} // namespace

std::string privateDirectory() {
    const std::optional<std::string> runtime = runtimeDirectory();
    const std::string path = withSlash(runtime ? *runtime : cacheDirectory()) + "orrery";
    makeDirectories(path);
    requirePrivate(path);
    return withSlash(path);
}

std::string temporaryDirectory() {
    const std::string chosen = environment(variable);
    if (!chosen.empty()) return chosenDirectory(chosen);
    std::string path = privateDirectory();
    exportDirectory(path.substr(0, path.size() - 1));
    return path;
}

} // namespace orrery
