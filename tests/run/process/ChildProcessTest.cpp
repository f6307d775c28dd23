#include "run/process/ProcessTest.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

namespace orrery {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

/// A child and what was heard of it.
struct Heard {
    explicit Heard(ChildProcessLauncher& launcher) : child(launcher.makeChildProcess("engine")) {}

    void start(const std::vector<std::string>& command) {
        child->start(command, {.output =
                                   [this](std::span<const std::byte> bytes) {
                                       text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
                                       largestPiece = std::max(largestPiece, bytes.size());
                                   },
                               .endOfOutput = [this] { ++ends; },
                               .left = [this](std::string_view line) { left.emplace_back(line); }});
    }
    [[nodiscard]] bool firstLineIsThere() const { return text.find('\n') != std::string::npos; }
    [[nodiscard]] pid_t numberPrinted() const { return std::stoi(text); }

    std::unique_ptr<ChildProcess> child;
    std::string text;
    std::size_t largestPiece = 0;
    int ends = 0;
    std::vector<std::string> left;
};

class ChildProcessTest : public ProcessTest {
protected:
    std::string outputOf(const std::vector<std::string>& command) {
        Heard heard(*m_launcher);
        heard.start(command);
        EXPECT_TRUE(waitFor([&] { return heard.ends > 0; }));
        return heard.text;
    }
};

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

/// Whether we have children, running or unreaped; reaps none.
bool hasChildren() {
    siginfo_t info{};
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

/// While it lives, what our children leave behind comes to us, to be reaped by the test.
struct Orphanage {
    Orphanage() { prctl(PR_SET_CHILD_SUBREAPER, 1); }
    ~Orphanage() { prctl(PR_SET_CHILD_SUBREAPER, 0); }
    Orphanage(const Orphanage&) = delete;
    Orphanage& operator=(const Orphanage&) = delete;
};

// --- starting ---

struct FailureCase {
    const char* name;
    const char* file; // in a scratch directory, unless relative
    const char* content;
    mode_t mode;
    std::vector<std::string> more;
    const char* reason; // empty: the system's own words, in the user's language
};

class StartFailure : public ChildProcessTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(StartFailure, IsOneLineOfOutputAndThenTheEnd) {
    const FailureCase& row = GetParam();
    std::string scratch = testing::TempDir() + "orreryXXXXXX";
    ASSERT_NE(mkdtemp(scratch.data()), nullptr);
    const std::string path = std::string(row.file)[0] == '/' ? scratch + row.file : row.file;
    if (row.mode != 0) {
        std::ofstream(path) << row.content;
        chmod(path.c_str(), row.mode);
    }
    std::vector<std::string> command{path};
    command.insert(command.end(), row.more.begin(), row.more.end());
    Heard heard(*m_launcher);
    heard.start(command);
    EXPECT_EQ(heard.text + std::to_string(heard.ends), "0") << "nothing may be told inside start()";
    ASSERT_TRUE(waitFor([&] { return heard.ends > 0; }));
    const std::string reason = *row.reason == '\0' ? std::generic_category().message(E2BIG) : row.reason;
    EXPECT_THAT(heard.text, testing::AllOf(testing::StartsWith(path), HasSubstr(reason), testing::EndsWith(".\n")));
    EXPECT_EQ(std::count(heard.text.begin(), heard.text.end(), '\n'), 1);
    heard.child->terminate();
    EXPECT_TRUE(waitFor([] { return !hasChildren(); }));
    EXPECT_EQ(heard.ends, 1);
    std::filesystem::remove_all(scratch);
}

INSTANTIATE_TEST_SUITE_P(
    Reasons, StartFailure,
    testing::Values(FailureCase{"missing", "/absent", "", 0, {}, "Install the engine there"},
                    FailureCase{"aDirectory", "/.", "", 0, {}, "Make it an executable file"},
                    FailureCase{"notExecutable", "/plain", "#!/bin/sh\n", 0644, {}, "Make it an executable file"},
                    FailureCase{"badInterpreter", "/script", "#!/nonexistent\n", 0755, {}, "interpreter"},
                    FailureCase{"wrongMachine", "/text", "hello\n", 0755, {}, "built for this machine"},
                    FailureCase{"relativePath", "Zephyr", "", 0, {}, "not absolute"},
                    FailureCase{"nulInArgument", "/absent", "", 0, {std::string("a\0b", 3)}, "NUL"},
                    FailureCase{"tooManyArguments", "/script", "#!/bin/sh\n", 0755, {std::string(1U << 20U, 'x')}, ""}),
    [](const auto& row) { return row.param.name; });

TEST_F(ChildProcessTest, GetsNothingOfOursButTheEnvironment) {
    const int inheritable = open("/dev/null", O_RDONLY);
    sigset_t some;
    sigemptyset(&some);
    sigaddset(&some, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &some, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    const std::string text = outputOf({fakeEngine, "inspect", "-rf", "; $(id) `id`", "a\nb", "", "ü"});
    pthread_sigmask(SIG_UNBLOCK, &some, nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    close(inheritable);
    EXPECT_EQ(text, "descriptors 0 1 2\ninput /dev/null\none pipe\nown group\ndies with parent by 9\n"
                    "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n"
                    "[-rf]\n[; $(id) `id`]\n[a\nb]\n[]\n[ü]\n");
}

/// Runs `body` in a copy of this process that has no run loop yet; returns its pid.
pid_t inCopy(const std::function<void(RunLoop&, ChildProcessLauncher&)>& body) {
    const pid_t pid = fork();
    if (pid != 0) return pid;
    QtEventLoop application("copy");
    PosixChildProcessLauncher launcher(application.runLoop());
    body(application.runLoop(), launcher);
    _exit(0);
}

TEST(ChildOfAnotherProcess, IsStartedWithTheStandardDescriptorsClosed) {
    const pid_t copy = inCopy([](RunLoop& loop, ChildProcessLauncher& launcher) {
        for (int descriptor : {0, 1, 2})
            close(descriptor);
        Heard heard(launcher);
        heard.start({fakeEngine, "lines", "3"});
        _exit(runUntil(loop, [&] { return heard.ends > 0; }) && heard.text == "0\n1\n2\n" ? 42 : 1);
    });
    int status = 0;
    ASSERT_EQ(waitpid(copy, &status, 0), copy);
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

TEST(ChildOfAnotherProcess, DiesWithIt) {
    const Orphanage orphanage;
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const pid_t copy = inCopy([&](RunLoop& loop, ChildProcessLauncher& launcher) {
        Heard heard(launcher);
        heard.start({fakeEngine, "deaf"});
        if (!runUntil(loop, [&] { return heard.firstLineIsThere(); })) _exit(1);
        const pid_t engine = heard.numberPrinted();
        if (write(ends[1], &engine, sizeof engine) < 0) _exit(1);
        runUntil(loop, [] { return false; });
    });
    pid_t engine = 0;
    ASSERT_EQ(read(ends[0], &engine, sizeof engine), static_cast<ssize_t>(sizeof engine));
    kill(copy, SIGKILL);
    ASSERT_EQ(waitpid(copy, nullptr, 0), copy);
    while (waitpid(-1, nullptr, 0) > 0) { // what it has left comes to us
    }
    EXPECT_TRUE(isGone(engine));
    close(ends[0]);
    close(ends[1]);
}

// --- output ---

TEST_F(ChildProcessTest, BothStreamsComeInTheOrderOfTheirWrites) {
    std::string expected;
    for (int i = 0; i < 20000; ++i)
        expected += std::to_string(i) + "\n";
    EXPECT_EQ(outputOf({fakeEngine, "lines", "20000"}), expected);
}

TEST_F(ChildProcessTest, AFloodStarvesNoTimer) {
    Heard heard(*m_launcher);
    std::size_t bytes = 0;
    int ticksWithNews = 0;
    const auto timer = m_application.runLoop().repeat(10ms, [&] {
        if (!heard.text.empty()) ++ticksWithNews;
        bytes += std::exchange(heard.text, {}).size();
    });
    heard.start({fakeEngine, "flood"});
    EXPECT_TRUE(waitFor([&] { return ticksWithNews >= 10 && bytes >= 200U << 20U; }));
    EXPECT_LE(heard.largestPiece, 65536U);
}

TEST_F(ChildProcessTest, AFloodComesWhole) {
    EXPECT_EQ(outputOf({fakeEngine, "flood", "20"}).size(), 20U << 20U);
}

TEST_F(ChildProcessTest, DrainDeliversWhatIsThereAndDoesNotWaitForAFloodToEnd) {
    Heard heard(*m_launcher);
    heard.start({fakeEngine, "flood"});
    ASSERT_TRUE(waitFor([&] { return !heard.text.empty(); }));
    heard.text.clear();
    heard.child->drain();
    EXPECT_LE(heard.text.size(), 1U << 20U);
    heard.child->stopListening();
    heard.text.clear();
    heard.child->drain();
    heard.child->terminate();
    EXPECT_TRUE(waitFor([] { return !hasChildren(); }));
    EXPECT_EQ(heard.text + std::to_string(heard.ends), "0") << "nothing may be told after stopListening()";
}

// --- the end ---

struct EndCase {
    const char* name;
    std::vector<std::string> arguments; // its first line of output is the number of the process to end
    bool isGrandchild = false;          // that process, which is then ours to reap
};

class Ending : public ChildProcessTest, public testing::WithParamInterface<EndCase> {
protected:
    void SetUp() override {
        m_heard.start(command());
        ASSERT_TRUE(waitFor([&] { return m_heard.firstLineIsThere(); }));
    }
    /// Whether nothing of the group is left, not even unreaped.
    [[nodiscard]] bool allGone() const {
        if (GetParam().isGrandchild) waitpid(m_heard.numberPrinted(), nullptr, WNOHANG);
        return !hasChildren() && isGone(m_heard.numberPrinted());
    }
    static std::vector<std::string> command() {
        std::vector<std::string> all{fakeEngine};
        all.insert(all.end(), GetParam().arguments.begin(), GetParam().arguments.end());
        return all;
    }
    Orphanage m_orphanage;
    Heard m_heard{*m_launcher};
};

TEST_P(Ending, TerminateEndsTheWholeGroupAndItsOutput) {
    m_heard.child->terminate();
    m_heard.child->terminate();
    EXPECT_TRUE(waitFor([&] { return m_heard.ends > 0 && allGone(); }));
    EXPECT_EQ(m_heard.ends, 1);
}

TEST_P(Ending, TheGroupIsEndedInTheBackgroundWhenItsOwnerGoes) {
    m_heard.child.reset();
    EXPECT_TRUE(waitFor([&] { return allGone(); }));
    EXPECT_EQ(m_heard.ends, 0);
}

TEST_P(Ending, TheGroupIsEndedBeforeTheLauncherHasGone) {
    m_heard.child.reset();
    m_launcher.reset();
    // The loop stands still, so only the launcher can have done it.
    for (int i = 0; i < 60000 && !allGone(); ++i)
        std::this_thread::sleep_for(1ms);
    EXPECT_TRUE(allGone());
}

INSTANTIATE_TEST_SUITE_P(Engines, Ending,
                         testing::Values(EndCase{"waiting", {"hang"}}, EndCase{"deafToTermination", {"deaf"}},
                                         EndCase{"stopped", {"stopped"}},
                                         EndCase{"leavingAGrandchild", {"leave"}, true},
                                         EndCase{"leavingADeafGrandchild", {"leave", "deaf"}, true}),
                         [](const auto& row) { return row.param.name; });

TEST_F(ChildProcessTest, AnEngineCanClearItsFilesAwayAlsoWhenTheLauncherGoes) {
    const std::string scratch = testing::TempDir() + "orrery-tidy-" + std::to_string(getpid());
    Heard heard(*m_launcher);
    heard.start({fakeEngine, "tidy", scratch});
    ASSERT_TRUE(waitFor([&] { return heard.firstLineIsThere(); }));
    ASSERT_TRUE(std::filesystem::exists(scratch));
    heard.child.reset();
    m_launcher.reset();
    EXPECT_FALSE(std::filesystem::remove(scratch));
}

TEST_F(ChildProcessTest, WhatTheChildLeftBehindIsNamedOnceAndHoldsTheEndBack) {
    Heard heard(*m_launcher);
    heard.start({fakeEngine, "leave"});
    ASSERT_TRUE(waitFor([&] { return !heard.left.empty(); }));
    EXPECT_THAT(heard.left[0], HasSubstr("has ended, but something that it left behind still holds its output"));
    EXPECT_EQ(heard.ends, 0);
    heard.child->terminate();
    ASSERT_TRUE(waitFor([&] { return heard.ends > 0; }));
    EXPECT_EQ(heard.left.size(), 1U);
}

TEST_F(ChildProcessTest, ManyRunsLeaveNoProcessAndNoDescriptor) {
    outputOf({fakeEngine, "nothing"}); // the loop's own descriptors are made at its first use
    ASSERT_TRUE(waitFor([] { return !hasChildren(); }));
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(outputOf({fakeEngine, "lines", "2"}), "0\n1\n");
    EXPECT_TRUE(waitFor([] { return !hasChildren(); }));
    EXPECT_EQ(openDescriptors(), before);
}

// --- the application's loop ---

TEST_F(ChildProcessTest, SignalsThatAskForTheEndArriveInTheLoop) {
    std::vector<int> heard;
    m_application.onTerminationSignal([&](int number) { heard.push_back(number); });
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        raise(number);
    EXPECT_TRUE(heard.empty());
    EXPECT_TRUE(waitFor([&] { return heard.size() == 3; }));
    EXPECT_EQ(heard, (std::vector<int>{SIGINT, SIGTERM, SIGHUP}));
    m_application.quit(7);
    EXPECT_EQ(m_application.run(), 7) << "quit() before run() counts";
}

TEST_F(ChildProcessTest, SourcesMayBeDestroyedInTheirOwnCallback) {
    int ticks = 0;
    std::unique_ptr<RunLoop::Source> timer;
    timer = m_application.runLoop().repeat(1ms, [&] {
        if (++ticks == 3) timer.reset();
    });
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[1]); // at its end, so always readable
    std::size_t seen = 0;
    std::unique_ptr<RunLoop::Source> watch;
    watch = m_application.runLoop().watchReadable(ends[0], [&, captured = std::string(100, 'x')] {
        watch.reset();
        seen += captured.size();
    });
    bool later = false;
    const auto after = m_application.runLoop().after(20ms, [&] { later = true; });
    EXPECT_TRUE(waitFor([&] { return later && ticks >= 3 && seen >= 100; }));
    EXPECT_EQ(ticks, 3);
    EXPECT_EQ(seen, 100U);
    close(ends[0]);
}

} // namespace
} // namespace orrery
