#include "platform/guard/Descendants.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace orrery {
namespace {

/// The start of a process's line of facts: "pid (name) state parent ...".
std::string readStat(pid_t process) {
    std::array<char, 512> buffer{};
    const std::string path = "/proc/" + std::to_string(process) + "/stat";
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    const ssize_t count = read(file, buffer.data(), buffer.size());
    close(file);
    return {buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
}

/// 0 when there is no such process.
pid_t parentOf(pid_t process) {
    const std::string stat = readStat(process);
    const std::size_t nameEnd = stat.rfind(") "); // a name may hold anything
    pid_t parent = 0;
    if (nameEnd == std::string::npos || nameEnd + 4 > stat.size()) return 0;
    std::from_chars(stat.data() + nameEnd + 4, stat.data() + stat.size(), parent);
    return parent;
}

/// Every process and its parent; empty when they cannot be listed.
std::map<pid_t, pid_t> listProcesses() {
    std::map<pid_t, pid_t> parents;
    DIR* const directory = opendir("/proc");
    if (directory == nullptr) return parents;
    while (const dirent* const entry = readdir(directory)) {
        const std::string_view name = static_cast<const char*>(entry->d_name);
        pid_t process = 0;
        const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), process);
        if (fault == std::errc() && end == name.data() + name.size()) parents[process] = parentOf(process);
    }
    closedir(directory);
    return parents;
}

std::set<pid_t> descendantsAmong(const std::map<pid_t, pid_t>& parents) {
    std::set<pid_t> family{getpid()};
    for (std::size_t before = 0; before != family.size();) {
        before = family.size();
        for (const auto& [process, parent] : parents) {
            if (family.contains(parent)) family.insert(process);
        }
    }
    family.erase(getpid());
    return family;
}

/// What the descriptor stands for stays the same process; that it is still one of ours is seen after it was opened.
void signalOne(pid_t process, int signal, const std::set<pid_t>& family) {
    const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    if (descriptor < 0) {
        if (errno == ENOSYS) kill(process, signal);
        return;
    }
    const pid_t parent = parentOf(process);
    if (parent == getpid() || family.contains(parent)) {
        syscall(SYS_pidfd_send_signal, descriptor, signal, nullptr, 0);
    }
    close(descriptor);
}

} // namespace

bool signalDescendants(int signal) {
    const std::map<pid_t, pid_t> parents = listProcesses();
    const std::set<pid_t> family = descendantsAmong(parents);
    for (const pid_t process : family)
        signalOne(process, signal, family);
    return !parents.empty();
}

} // namespace orrery
