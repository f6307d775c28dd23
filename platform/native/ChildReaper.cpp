#include "platform/native/ChildReaper.h"

#include <sys/wait.h>

#include <array>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace orrery {
namespace {

using namespace std::chrono_literals;

constexpr auto gracePeriod = 2s;
constexpr auto lastGracePeriod = 500ms; // when we end ourselves, so that an engine can still clear its files away
constexpr auto lookInterval = 20ms;

enum class LeaderState { Running, Ended, NotOurs };

LeaderState stateOf(pid_t child) {
    siginfo_t info{};
    if (waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) != 0) return LeaderState::NotOurs;
    return info.si_pid == child ? LeaderState::Ended : LeaderState::Running;
}

bool hasLivingMembers(pid_t group);
void killAndReap(pid_t leader);

} // namespace

bool hasEnded(pid_t child) {
    return stateOf(child) != LeaderState::Running;
}

ProcessEnd endOf(pid_t child) {
    siginfo_t info{};
    if (waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) != 0) return {};
    if (info.si_pid != child) return {};
    return {info.si_code == CLD_EXITED ? ProcessEnd::Kind::Exited : ProcessEnd::Kind::Signalled, info.si_status};
}

ChildReaper::~ChildReaper() {
    const auto deadline = std::chrono::steady_clock::now() + lastGracePeriod;
    for (; !m_groups.empty() && std::chrono::steady_clock::now() < deadline; std::this_thread::sleep_for(5ms)) {
        std::erase_if(m_groups, isDealtWith);
    }
    for (const Group& group : m_groups)
        killAndReap(group.leader);
}

void ChildReaper::end(pid_t leader, FileDescriptor output) {
    if (stateOf(leader) == LeaderState::NotOurs) return;
    kill(-leader, SIGTERM);
    kill(-leader, SIGCONT); // a stopped process does not see SIGTERM
    m_groups.push_back({leader, std::move(output), std::chrono::steady_clock::now() + gracePeriod, false});
    if (m_timer == nullptr) m_timer = m_loop.repeat(lookInterval, [this] { lookAfter(); });
}

void ChildReaper::lookAfter() {
    std::erase_if(m_groups, isDealtWith);
    if (m_groups.empty()) m_timer.reset();
}

bool ChildReaper::isDealtWith(Group& group) {
    const LeaderState state = stateOf(group.leader);
    if (state == LeaderState::NotOurs) return true;
    if (state == LeaderState::Ended && (group.killed || !hasLivingMembers(group.leader))) {
        waitpid(group.leader, nullptr, WNOHANG);
        return true;
    }
    if (!group.killed && std::chrono::steady_clock::now() >= group.killTime) {
        kill(-group.leader, SIGKILL);
        group.killed = true;
    }
    return false;
}

namespace {

/// Whether the process of that entry of /proc belongs to the group and is more than a zombie.
bool isLivingMember(const std::filesystem::path& entry, pid_t group) {
    std::ifstream file(entry / "stat");
    std::string stat;
    std::getline(file, stat, '\0');
    const std::size_t nameEnd = stat.rfind(") "); // "pid (name) state parent group ...": a name may hold anything
    if (nameEnd == std::string::npos || nameEnd + 4 > stat.size()) return false;
    const char state = stat[nameEnd + 2];
    const std::size_t groupField = stat.find(' ', nameEnd + 4);
    pid_t found = 0;
    if (groupField == std::string::npos) return false;
    std::from_chars(stat.data() + groupField + 1, stat.data() + stat.size(), found);
    return found == group && state != 'Z' && state != 'X';
}

bool hasLivingMembers(pid_t group) {
    std::error_code error;
    std::filesystem::directory_iterator entries("/proc", error);
    if (error) return true; // cannot be known: the grace period runs out
    for (; entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        const std::string name = entries->path().filename();
        if (name.find_first_not_of("0123456789") == std::string::npos && isLivingMember(entries->path(), group)) {
            return true;
        }
    }
    return false;
}

/// A killed process is gone in no time unless the system holds it, for example on a dead network drive; then it is
/// left to whoever inherits it.
void killAndReap(pid_t leader) {
    constexpr int tries = 1000;
    if (stateOf(leader) == LeaderState::NotOurs) return;
    kill(-leader, SIGKILL);
    for (int i = 0; i < tries && waitpid(leader, nullptr, WNOHANG) == 0; ++i)
        std::this_thread::sleep_for(1ms);
}

} // namespace
} // namespace orrery
