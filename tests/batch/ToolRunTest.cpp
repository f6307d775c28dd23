// orrery-batch run: the engine's text, the results, and how it ends.
#include "batch/ToolFixture.h"
#include "platform/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace orrery::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// An engine that copies the table that lies ready.
constexpr const char* goodEngine = "echo computing \"$1\"; cp \"$TMPDIR/ready.txt\" \"$TMPDIR/Zephyr.txt\"";
/// An engine that ends by a signal only, says when it is there, and puts its things in order before it goes.
constexpr const char* endlessEngine =
    "trap 'echo gone > gone; exit 0' TERM; echo endless; while :; do sleep 0.02; done";

TEST_F(Tool, RunsTheEngineAndPrintsTheSummary) {
    (void)m_folder.write("ready.txt", resultTable);
    const std::string engine = makeEngine(goodEngine);
    const Finished done = run({"run", "setup.orrery", "--engine", engine});
    EXPECT_EQ(done.exitCode, 0) << done.err;
    EXPECT_THAT(done.err, HasSubstr("computing " + m_folder.path() + "setup.orrery\n"));
    EXPECT_EQ(done.out, run({"results", "setup.orrery", "--summary"}).out);
    EXPECT_EQ(run({"run", "setup.orrery", "--engine", engine, "--no-results"}).out, "");
    EXPECT_THAT(run({"run", "setup.orrery", "--engine", engine, "--report"}).out, HasSubstr("6 rows"));
}

TEST_F(Tool, SaysHowOldATableIsThatTheEngineDidNotWrite) {
    (void)m_folder.write("Zephyr.txt", resultTable);
    const Finished done = run({"run", "setup.orrery", "--engine", makeEngine("exit 3")});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_THAT(done.err, HasSubstr("old."));
}

struct FailedRun {
    const char* name;
    const char* engine; // a script; none: the path does not exist
    const char* message;
};
class ToolFails : public Tool, public testing::WithParamInterface<FailedRun> {};
TEST_P(ToolFails, ToRunWithoutAResult) {
    const bool exists = GetParam().engine != nullptr;
    const Finished done =
        run({"run", "setup.orrery", "--engine", exists ? makeEngine(GetParam().engine) : "no-engine"});
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_EQ(done.out, "");
    EXPECT_THAT(done.err, HasSubstr(GetParam().message));
}
INSTANTIATE_TEST_SUITE_P(Engines, ToolFails,
                         testing::Values(FailedRun{"missing", nullptr, "no-engine: "},
                                         FailedRun{"withoutTable", "echo failed to start >&2; exit 1", "Zephyr.txt"},
                                         FailedRun{"withFewLabels", "echo run > \"$TMPDIR/Zephyr.txt\"", "labels"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Tool, AbortsTheRunOnAnInterrupt) {
    for (const int number : {SIGINT, SIGTERM}) {
        RunningTool tool(m_folder.path(), {"run", "setup.orrery", "--engine", makeEngine(endlessEngine)});
        tool.awaitError("endless");
        tool.sendSignal(number);
        const Finished done = tool.finish();
        EXPECT_EQ(done.exitCode, 130);
        EXPECT_EQ(done.out, "");
        EXPECT_THAT(done.err, HasSubstr("Aborted"));
        EXPECT_TRUE(std::filesystem::remove(m_folder.path() + "gone")) << "the engine had no time to end";
    }
}

TEST_F(Tool, NamesTheRunThatHoldsTheTemporaryDirectoryOrWaitsForIt) {
    const std::string other = m_folder.write("other.orrery", readWholeFile(m_folder.path() + "setup.orrery"));
    const std::string engine = makeEngine("echo first; while [ ! -e \"$TMPDIR/go\" ]; do sleep 0.02; done");
    RunningTool first(m_folder.path(), {"run", other, "--engine", engine});
    first.awaitError("first");

    const std::vector<std::string> arguments{"run", "setup.orrery", "--engine", "/bin/true"};
    const Finished refused = run(arguments);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, HasSubstr(other));

    RunningTool waiting(m_folder.path(), {"run", "setup.orrery", "--engine", "/bin/true", "--wait"});
    waiting.awaitError(other);
    (void)m_folder.write("Zephyr.txt", resultTable);
    (void)m_folder.write("go", "");
    EXPECT_EQ(first.finish().exitCode, 0);
    EXPECT_EQ(waiting.finish().exitCode, 0);
}

TEST_F(Tool, RunsTheTwoStepperSampleThroughTheSampleEngine) {
    const Finished done = run({"run", "--report", ORRERY_SAMPLES "/crop-two-steppers.orrery"});
    EXPECT_EQ(done.exitCode, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("rows"));
    EXPECT_THAT(done.out, Not(HasSubstr("no numbers")));
}

} // namespace
} // namespace orrery::test
