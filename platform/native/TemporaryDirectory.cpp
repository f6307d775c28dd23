#include "platform/TemporaryDirectory.h"

#include "platform/Files.h"
#include "platform/OrreryError.h"
#include "platform/native/SystemCalls.h"

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
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): called before any thread starts
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
    if (!S_ISDIR(status.st_mode)) throwUnusable(path, "is no directory", remedy);
    if (access(path.c_str(), W_OK | X_OK) != 0) {
        throwUnusable(path, "cannot be written to: " + systemReason(errno), remedy);
    }
    if (path != value) exportDirectory(path);
    return withSlash(path);
}

/// Whether the path is a directory of this user that can be written to; what it is a link to counts.
bool isOwnDirectory(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           access(path.c_str(), W_OK | X_OK) == 0;
}

std::string cacheDirectory() {
    const std::string cache = environment("XDG_CACHE_HOME");
    if (cache.starts_with('/')) return cache;
    const std::string home = environment("HOME");
    if (!home.starts_with('/')) {
        throwUnusable("~", "has no place: there is neither a runtime nor a home directory", "Set TMPDIR or HOME.");
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
    throwUnusable(path, "cannot be made: " + systemReason(errno), "Set TMPDIR to a directory that you can write to.");
}

/// A directory that nobody else can have prepared or can write to.
void requirePrivate(const std::string& path) {
    struct stat status {};
    const char* const remedy = "Remove it, or set TMPDIR to a directory of your own.";
    if (lstat(path.c_str(), &status) != 0) throwUnusable(path, "cannot be used: " + systemReason(errno), remedy);
    if (S_ISLNK(status.st_mode)) throwUnusable(path, "is a symbolic link", remedy);
    if (!S_ISDIR(status.st_mode)) throwUnusable(path, "is no directory", remedy);
    if (status.st_uid != geteuid()) throwUnusable(path, "belongs to another user", remedy);
    if ((status.st_mode & 07777U) != S_IRWXU)
        throwUnusable(path, "is open to other users (its mode is not 700)", remedy);
}

std::string privateDirectory() {
    const std::string runtime = environment("XDG_RUNTIME_DIR");
    const bool hasRuntime = runtime.starts_with('/') && isOwnDirectory(runtime);
    const std::string path = withSlash(hasRuntime ? runtime : cacheDirectory()) + "orrery";
    makeDirectories(path);
    requirePrivate(path);
    exportDirectory(path);
    return withSlash(path);
}

} // namespace

std::string temporaryDirectory() {
    const std::string chosen = environment(variable);
    return chosen.empty() ? privateDirectory() : chosenDirectory(chosen);
}

} // namespace orrery
