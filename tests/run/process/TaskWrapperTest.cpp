#include "run/TaskWrapper.h"

#include "platform/Log.h"
#include "run/RunOutcome.h"
#include "run/process/ProcessTest.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

namespace orrery {
namespace {

using namespace std::chrono_literals;

/// Writes down what it hears: "S" for the start, the text, "F" for the end.
struct Recorder : TaskWrapperController {
    void processStarted() override { hear("S"); }
    void appendOutput(std::string_view text) override { hear(std::string(text)); }
    void engineEnded(const ProcessEnd& howItEnded) override { end = howItEnded; }
    void processFinished() override { hear("F"); }
    void hear(const std::string& what) {
        heard += what;
        if (reaction) reaction(what);
    }
    [[nodiscard]] bool finished() const { return heard.ends_with("F"); }

    std::string heard;
    ProcessEnd end;
    std::function<void(const std::string&)> reaction;
};

class TaskWrapperTest : public ProcessTest {
protected:
    void make(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), fakeEngine);
        m_wrapper = std::make_unique<TaskWrapper>(&m_recorder, std::move(arguments), *m_launcher);
    }
    void start(std::vector<std::string> arguments) {
        make(std::move(arguments));
        m_wrapper->startProcess();
    }

    Recorder m_recorder;
    std::unique_ptr<TaskWrapper> m_wrapper;
};

struct RunCase {
    const char* name;
    std::vector<std::string> arguments;
    const char* heard;
    ProcessEnd end = {ProcessEnd::Kind::Exited, 0};
};

class WholeRun : public TaskWrapperTest, public testing::WithParamInterface<RunCase> {};

TEST_P(WholeRun, IsToldFromItsStartToItsEnd) {
    start(GetParam().arguments);
    ASSERT_TRUE(waitFor([&] { return m_recorder.finished(); }));
    m_wrapper->stopProcess();
    m_wrapper.reset();
    EXPECT_EQ(m_recorder.heard, GetParam().heard);
    EXPECT_EQ(engineEndInWords(m_recorder.end), engineEndInWords(GetParam().end));
}

INSTANTIATE_TEST_SUITE_P(
    Engines, WholeRun,
    testing::Values(RunCase{"withoutArguments", {}, "Sno arguments\nF"}, RunCase{"silent", {"nothing"}, "SF"},
                    RunCase{"onlyErrors", {"errors"}, "Sonly errors\nF"},
                    RunCase{"failing", {"exit", "3"}, "SF", {ProcessEnd::Kind::Exited, 3}},
                    RunCase{"dyingBySignal", {"signal", "11"}, "Sabout to die\nF", {ProcessEnd::Kind::Signalled, 11}},
                    RunCase{"splitCharacters", {"bytes", "C3BCE2889EF09F9880"}, "Sü∞😀F"},
                    RunCase{"malformedCharacters", {"bytes", "61FF62C0AF"}, "Sa\uFFFDb\uFFFD\uFFFDF"},
                    RunCase{"halfACharacterAtTheEnd", {"bytes", "61E288"}, "Sa\uFFFDF"}),
    [](const auto& row) { return row.param.name; });

/// What the controller does on hearing `at`.
struct ReactionCase {
    const char* name;
    const char* at;
    bool destroys; // else stops
    std::vector<std::string> arguments;
    const char* heard;
};

class Reaction : public TaskWrapperTest, public testing::WithParamInterface<ReactionCase> {};

TEST_P(Reaction, EndsTheRunOnce) {
    const ReactionCase& row = GetParam();
    m_recorder.reaction = [&](const std::string& what) {
        if (what != row.at) return;
        row.destroys ? m_wrapper.reset() : m_wrapper->stopProcess();
    };
    start(row.arguments);
    ASSERT_TRUE(waitFor([&] { return m_recorder.finished(); }));
    bool later = false; // a second end would come with the next turns of the loop
    const auto turn = m_application.runLoop().after(0ns, [&] { later = true; });
    ASSERT_TRUE(waitFor([&] { return later; }));
    EXPECT_EQ(m_recorder.heard, row.heard);
}

INSTANTIATE_TEST_SUITE_P(
    Controllers, Reaction,
    testing::Values(ReactionCase{"stoppingAtTheStart", "S", false, {"hang"}, "SF"},
                    ReactionCase{"destroyingAtTheStart", "S", true, {"hang"}, "SF"},
                    ReactionCase{"stoppingAtOutput", "only errors\n", false, {"errors"}, "Sonly errors\nF"},
                    ReactionCase{"destroyingAtOutput", "only errors\n", true, {"errors"}, "Sonly errors\nF"},
                    ReactionCase{"stoppingAtTheLastCharacter", "\uFFFD", false, {"bytes", "E288"}, "S\uFFFDF"},
                    ReactionCase{"destroyingAtTheLastCharacter", "\uFFFD", true, {"bytes", "E288"}, "S\uFFFDF"},
                    ReactionCase{"stoppingAtTheEnd", "F", false, {"nothing"}, "SF"},
                    ReactionCase{"destroyingAtTheEnd", "F", true, {"nothing"}, "SF"}),
    [](const auto& row) { return row.param.name; });

TEST_F(TaskWrapperTest, AStopDeliversWhatThePipeHoldsAlsoWhenItsDeliveryStopsOrDestroys) {
    const std::string mark = testing::TempDir() + "orrery-hang-" + std::to_string(getpid());
    for (const bool destroys : {false, true}) {
        m_recorder = {};
        start({"hang", mark});
        // The loop stands still, so the text waits in the pipe.
        for (int i = 0; i < 60000 && !std::filesystem::exists(mark); ++i)
            std::this_thread::sleep_for(1ms);
        std::filesystem::remove(mark);
        m_recorder.reaction = [&](const std::string& what) {
            if (what.ends_with('\n')) destroys ? m_wrapper.reset() : m_wrapper->stopProcess();
        };
        m_wrapper->stopProcess();
        EXPECT_THAT(m_recorder.heard, testing::MatchesRegex("S[0-9]+\nF"));
    }
}

TEST_F(TaskWrapperTest, AStopAtAnyMomentReportsOneEnd) {
    for (int turns = 0; turns < 200; ++turns) {
        m_recorder.heard.clear();
        start({"lines", "50"});
        for (int i = 0; i < turns % 20; ++i)
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        m_wrapper->stopProcess();
        m_wrapper.reset();
        ASSERT_TRUE(m_recorder.finished());
        ASSERT_EQ(std::count(m_recorder.heard.begin(), m_recorder.heard.end(), 'F'), 1);
    }
}

TEST_F(TaskWrapperTest, AnEndThatNoControllerWaitsForIsNotReported) {
    make({"nothing"});
    m_wrapper->stopProcess();
    m_wrapper.reset();
    EXPECT_EQ(m_recorder.heard, "") << "never started";
    start({"hang"});
    m_wrapper->clearController();
    m_wrapper.reset();
    EXPECT_EQ(m_recorder.heard, "S") << "cleared";
}

TEST_F(TaskWrapperTest, WhatTheEngineLeftBehindIsLoggedAndAStopEndsTheRun) {
    std::vector<std::string> log;
    setLogSink([&](std::string_view line) { log.emplace_back(line); });
    start({"leave"});
    EXPECT_TRUE(waitFor([&] { return !log.empty(); }));
    setLogSink({});
    EXPECT_FALSE(m_recorder.finished());
    m_wrapper->stopProcess();
    EXPECT_TRUE(m_recorder.finished());
}

} // namespace
} // namespace orrery
