#include "platform/native/SaveLitter.h"

#include "platform/Files.h"
#include "platform/native/FileDescriptor.h"
#include "platform/native/SystemCalls.h"
#include "platform/values/OrreryError.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string_view>

namespace orrery {
namespace {

constexpr std::string_view prefix = ".orrery-";
constexpr std::size_t digits = 16;
constexpr std::time_t youngestLitter = 60; // seconds; a save may not have locked its new file yet

bool isSaveName(std::string_view name) {
    return name.size() == prefix.size() + digits && name.starts_with(prefix) &&
           name.find_first_not_of("0123456789abcdef", prefix.size()) == std::string_view::npos;
}

bool isAbandoned(int directory, const char* name) {
    const FileDescriptor file(openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    return file.isOpen() && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
           std::time(nullptr) - status.st_mtim.tv_sec >= youngestLitter && flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

} // namespace

std::string unforeseenSaveName() {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) {
        throw OrreryError("The system provides no random numbers: " + systemReason(errno) + ".", {}, "Save it again.");
    }
    return fmt::format("{}{:016x}", prefix, number);
}

void removeSaveLitter(int directory) {
    FileDescriptor copy(openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)); // with a position of its own
    using Entries = std::unique_ptr<DIR, decltype([](DIR* entries) { closedir(entries); })>;
    const Entries entries{copy.isOpen() ? fdopendir(copy.get()) : nullptr};
    if (!entries) return;
    (void)copy.release(); // the entries own it now
    while (const dirent* entry = readdir(entries.get())) {
        if (isSaveName(entry->d_name) && isAbandoned(directory, entry->d_name)) unlinkat(directory, entry->d_name, 0);
    }
}

void removeSaveLitter(const std::string& directory) {
    const FileDescriptor opened(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.isOpen()) removeSaveLitter(opened.get());
}

} // namespace orrery
