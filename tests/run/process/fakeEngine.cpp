// An engine that behaves well or badly on demand: the first argument names what it does, the others are that
// behaviour's own. Where FAKE_ENGINE is set, its words stand in for the arguments, for callers that fix those.

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Arguments = std::vector<std::string>;

void put(std::string_view text, int stream = STDOUT_FILENO) {
    while (!text.empty()) {
        const ssize_t count = write(stream, text.data(), text.size());
        if (count <= 0) _exit(9);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

void putOwnNumber() {
    put(std::to_string(getpid()) + "\n");
}

[[noreturn]] void waitForEver() {
    for (;;)
        pause();
}

long number(const Arguments& arguments) {
    return arguments.empty() ? 0 : std::atol(arguments[0].c_str());
}

void alternatingLines(const Arguments& arguments) {
    for (long i = 0; i < number(arguments); ++i)
        put(std::to_string(i) + "\n", i % 2 == 0 ? STDOUT_FILENO : STDERR_FILENO);
}

/// The bytes given in hex, one write call each.
void bytesOneByOne(const Arguments& arguments) {
    for (std::size_t i = 0; i + 1 < arguments.at(0).size(); i += 2) {
        const char byte = static_cast<char>(std::stoi(arguments[0].substr(i, 2), nullptr, 16));
        put({&byte, 1});
    }
}

/// So many MB; without a number for ever.
void flood(const Arguments& arguments) {
    const std::string block = std::string(1023, 'x') + "\n";
    std::string megabyte;
    for (int i = 0; i < 1024; ++i)
        megabyte += block;
    for (long i = 0; arguments.empty() || i < number(arguments); ++i)
        put(megabyte);
}

void dieBySignal(const Arguments& arguments) {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    put("about to die\n");
    std::signal(static_cast<int>(number(arguments)), SIG_DFL); // a sanitizer may have taken it
    raise(static_cast<int>(number(arguments)));
}

/// Leaves a child in its group that holds the pipe, and ends.
void leaveGrandchild(const Arguments& arguments) {
    if (!arguments.empty()) std::signal(SIGTERM, SIG_IGN);
    if (fork() == 0) {
        putOwnNumber();
        waitForEver();
    }
}

std::string target(const std::string& link) {
    char path[256];
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return length < 0 ? "?" : std::string(path, static_cast<std::size_t>(length));
}

/// What it was given by whoever started it: a line each.
void inspect(const Arguments& arguments) {
    DIR* const directory = opendir("/proc/self/fd");
    std::string descriptors;
    while (const dirent* entry = readdir(directory)) {
        const std::string name = entry->d_name;
        if (name[0] != '.' && std::atoi(name.c_str()) != dirfd(directory)) descriptors += " " + name;
    }
    put("descriptors" + descriptors + "\ninput " + target("/proc/self/fd/0") + "\n");
    put(target("/proc/self/fd/1") == target("/proc/self/fd/2") ? "one pipe\n" : "two pipes\n");
    put(getpgrp() == getpid() ? "own group\n" : "foreign group\n");
    int deathSignal = 0;
    prctl(PR_GET_PDEATHSIG, &deathSignal);
    put("dies with parent by " + std::to_string(deathSignal) + "\n");
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk") || line.starts_with("SigIgn")) put(line + "\n");
    }
    for (const std::string& argument : arguments)
        put("[" + argument + "]\n");
}

const std::map<std::string_view, std::function<void(const Arguments&)>> behaviours{
    {"lines", alternatingLines},
    {"bytes", bytesOneByOne},
    {"flood", flood},
    {"signal", dieBySignal},
    {"leave", leaveGrandchild},
    {"inspect", inspect},
    {"nothing", [](const Arguments&) {}},
    {"errors", [](const Arguments&) { put("only errors\n", STDERR_FILENO); }},
    {"exit", [](const Arguments& arguments) { _exit(static_cast<int>(number(arguments))); }},
    {"hang",
     [](const Arguments& arguments) { // a file named as argument is made when the text is in the pipe
         putOwnNumber();
         if (!arguments.empty()) close(open(arguments[0].c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
         waitForEver();
     }},
    {"deaf",
     [](const Arguments&) {
         std::signal(SIGTERM, SIG_IGN);
         putOwnNumber();
         waitForEver();
     }},
    {"tidy",
     [](const Arguments& arguments) { // makes a file and removes it when it is asked to end
         static std::string scratch = arguments.at(0);
         std::signal(SIGTERM, [](int) {
             unlink(scratch.c_str());
             _exit(0);
         });
         close(open(scratch.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
         putOwnNumber();
         waitForEver();
     }},
    {"stopped",
     [](const Arguments&) {
         putOwnNumber();
         raise(SIGSTOP);
         waitForEver();
     }},
};

} // namespace

int main(int count, char** words) {
    Arguments arguments(words + 1, words + count);
    if (const char* const instead = std::getenv("FAKE_ENGINE")) {
        arguments.clear();
        std::istringstream stream(instead);
        for (std::string word; stream >> word;)
            arguments.push_back(word);
    }
    if (arguments.empty()) {
        put("no arguments\n");
        return 0;
    }
    const auto behaviour = behaviours.find(arguments[0]);
    if (behaviour == behaviours.end()) {
        put("fakeEngine: no such behaviour: " + arguments[0] + "\n", STDERR_FILENO);
        return 1;
    }
    behaviour->second({arguments.begin() + 1, arguments.end()});
    _exit(0); // a leak check at the exit would start a process of its own, which the tests would take for the engine's
}
