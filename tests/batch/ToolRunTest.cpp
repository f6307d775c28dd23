// orrery-batch run: the engine's text, the results, and how it ends.
#include "batch/ToolFixture.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
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

TEST_F(Tool, KeepsARunThatIsReadWithoutItsSetupModelAndTable) {
    (void)m_folder.write("ready.txt", resultTable);
    const std::string engine = makeEngine(goodEngine);
    const Finished refused = run({"run", "setup.orrery", "--engine", engine, "--keep", "none/kept.nc"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, Not(HasSubstr("computing"))) << "a night's run would be lost";
    EXPECT_EQ(run({"run", "setup.orrery", "--engine", engine, "--keep", "kept.nc", "--no-results"}).exitCode, 0);
    EXPECT_EQ(run({"results", "setup.orrery", "--keep", "table.nc"}).err, "");
    EXPECT_EQ(run({"results", "table.nc"}).out, run({"results", "kept.nc"}).out);
    EXPECT_THAT(run({"results", "table.nc", "--keep", "again.nc"}).err, HasSubstr("kept already"));
    const std::vector<std::vector<std::string>> commands{
        {"results", "FILE"}, {"results", "FILE", "--csv", "-"}, {"plot", "FILE", "--axis1", "day", "--include", "#0"}};
    std::vector<std::string> answers;
    for (const std::string file : {"setup.orrery", "kept.nc"}) {
        for (std::vector<std::string> command : commands) {
            command[1] = file;
            answers.push_back(run(command).out);
        }
        for (const char* const each : {"setup.orrery", "model.xml", "Zephyr.txt"}) {
            std::filesystem::remove(m_folder.path() + each);
        }
    }
    for (std::size_t i = 0; i < commands.size(); ++i) {
        EXPECT_FALSE(answers[i].empty());
        EXPECT_EQ(answers[i + commands.size()], answers[i]) << commands[i].front();
    }
    EXPECT_THAT(run({"report", "kept.nc"}).out, HasSubstr("6 rows"));
    EXPECT_THAT(run({"report", "kept.nc", "--table", "Zephyr.txt"}).err, HasSubstr("no result table beside it"));
}

TEST_F(Tool, ListsKeptRunsAndChangesWhatIsSaidOfThem) {
    (void)m_folder.write("ready.txt", resultTable);
    const std::string engine = makeEngine(goodEngine);
    EXPECT_THAT(run({"runs", "--store", "kept"}).out, HasSubstr("No runs are kept in " + m_folder.path() + "kept"));
    EXPECT_EQ(run({"runs", "--store", "kept", "--json"}).json(), nlohmann::json::array());
    std::filesystem::create_directory(m_folder.path() + "kept");
    const auto keep = [&](const std::string& name) {
        return run({"run", "setup.orrery", "--engine", engine, "--keep", "kept/" + name, "--no-results"}).err;
    };
    (void)keep("1.nc");
    EXPECT_EQ(run({"new", "setup.orrery", "--model", "model.xml", "--set", "runLength=2", "--set", "reportStep=1",
                   "--step", "/Field/Crop/water=0:1:2", "--output", "/Field/Crop/yield"})
                  .err,
              "");
    (void)keep("2.nc");
    EXPECT_EQ(
        run({"runs", "--store", "kept", "--pin", "1.nc", "--note", "kept/2.nc", "-1 °C", "--note", "1.nc", ""}).err,
        "");
    const nlohmann::json runs = run({"runs", "setup.orrery", "--store", "kept", "--json"}).json();
    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0]["path"], m_folder.path() + "kept/2.nc");
    EXPECT_THAT(runs[0]["changes"].get<std::string>(), HasSubstr("output added: yield"));
    EXPECT_FALSE(runs[1].contains("changes")) << "of the first one";
    EXPECT_EQ(runs[0]["note"], "-1 °C");
    EXPECT_EQ(runs[1]["pinned"], true);
    const std::string table = run({"runs", "--store", "kept"}).out;
    EXPECT_THAT(table, HasSubstr("pinned  1.nc\n"));
    EXPECT_THAT(table, HasSubstr("  6 of 60  "));
    EXPECT_EQ(run({"runs", "--store", "kept", "--remove", "1.nc"}).exitCode, 1) << "it is pinned";
    EXPECT_EQ(run({"runs", "--store", "kept", "--unpin", "1.nc", "--remove", "1.nc"}).err, "");
    EXPECT_EQ(run({"runs", "--store", "kept", "--json"}).json().size(), 1U);
}

struct EndCase {
    const char* name;
    bool earlierTable;  // lies there before the run
    const char* engine; // a script; empty: it cannot be executed; none: the path does not exist
    std::vector<std::string> options;
    int exitCode;
    bool prints;
    const char* said; // in standard error
};
class ToolEnds : public Tool, public testing::WithParamInterface<EndCase> {};

TEST_P(ToolEnds, With0OnlyForThisRunsOwnWholeTable) {
    const EndCase& row = GetParam();
    (void)m_folder.write("ready.txt", resultTable);
    (void)m_folder.write("short.txt", std::string(resultTable).substr(0, 70));
    if (row.earlierTable) (void)m_folder.write("Zephyr.txt", resultTable);
    const std::string engine = row.engine == nullptr ? "no-engine" : makeEngine(row.engine);
    if (row.engine != nullptr && *row.engine == 0) (void)m_folder.write("engine", "#!/nowhere/interpreter\n");
    std::vector<std::string> arguments{"run", "setup.orrery", "--engine", engine};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const Finished done = run(arguments);
    EXPECT_EQ(done.exitCode, row.exitCode) << done.err;
    EXPECT_EQ(!done.out.empty(), row.prints) << done.out;
    EXPECT_THAT(done.err, HasSubstr(row.said));
}

INSTANTIATE_TEST_SUITE_P(
    Runs, ToolEnds,
    testing::Values(
        EndCase{"stale", true, "exit 0", {}, 1, false, "old); not printed without --accept-stale."},
        EndCase{"staleAccepted", true, "exit 0", {"--accept-stale"}, 1, true, "Results of an earlier run"},
        EndCase{"staleIsNotPartial", true, "exit 0", {"--accept-partial"}, 1, false, "without --accept-stale."},
        EndCase{"notStarted", true, "", {}, 1, false, "The engine could not be started."},
        EndCase{"missing", false, nullptr, {}, 1, false, "no-engine: "},
        EndCase{"withoutTable", false, "echo failed to start >&2; exit 1", {}, 1, false, "Zephyr.txt"},
        EndCase{"withFewLabels", false, "echo run > Zephyr.txt", {}, 1, false, "labels"},
        EndCase{"rowsMissing", false, "cp short.txt Zephyr.txt", {}, 1, false, "Incomplete: 2 of 6 rows"},
        EndCase{"rowsMissingAccepted", false, "cp short.txt Zephyr.txt", {"--accept-partial"}, 1, true, "2 of 6 rows"},
        EndCase{"sameTableWrittenAgain", true, "cat ready.txt > Zephyr.txt", {}, 0, true, "Processing"},
        EndCase{"exitCodeDecidesNothing",
                false,
                "cp ready.txt Zephyr.txt; exit 3",
                {},
                0,
                true,
                "The engine ended with exit code 3."},
        EndCase{"signal", true, "kill -9 $$", {}, 1, false, "The engine was ended by signal 9 (killed)."}),
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

TEST_F(Tool, EndsOnASignalAlsoWhenNobodyReadsItsMessages) {
    const std::string fifo = m_folder.path() + "unread";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const int number : {SIGINT, SIGTERM}) {
        const int reader = open(fifo.c_str(), O_RDWR | O_CLOEXEC); // NOLINT(*-vararg)
        const int capacity = fcntl(reader, F_GETPIPE_SZ);          // NOLINT(*-vararg)
        RunningTool tool(m_folder.path(), {"run", "setup.orrery", "--engine", makeEngine("exec yes")}, {}, fifo);
        for (int held = 0; held < capacity - PIPE_BUF;) {
            ASSERT_EQ(ioctl(reader, FIONREAD, &held), 0); // NOLINT(*-vararg)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        tool.sendSignal(number);
        EXPECT_EQ(tool.finish().exitCode, 130);
        close(reader);
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
    EXPECT_EQ(waiting.finish().exitCode, 1) << "it has read the table of the run before its own";
}

TEST_F(Tool, RefusesASetupFromElsewhereThatWritesOverFilesOutsideItsFolder) {
    ::setenv("XDG_CONFIG_HOME", m_folder.path().c_str(), 1); // where it is kept which setups were written here
    (void)m_folder.write("ready.txt", resultTable);
    (void)m_folder.write("precious.txt", "mine");
    std::filesystem::create_directory(m_folder.path() + "sub");
    const std::string engine = makeEngine(goodEngine);
    ASSERT_EQ(run({"new", "sub/own.orrery", "--model", m_folder.path() + "model.xml", "--set", "dimensions={ 2, 1 }",
                   "--set", "runLength=2", "--set", "reportStep=10", "--step", "/Field/Crop/water=0:1:2", "--output",
                   "/Field/Crop/yield=../precious.txt"})
                  .exitCode,
              0);
    EXPECT_EQ(run({"run", "sub/own.orrery", "--engine", engine}).exitCode, 0);
    (void)m_folder.write("sub/foreign.orrery", readWholeFile(m_folder.path() + "sub/own.orrery") + "\n");
    const Finished refused = run({"run", "sub/foreign.orrery", "--engine", engine});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.err, testing::AllOf(HasSubstr("precious.txt"), HasSubstr("--overwrite-outputs")));
    EXPECT_THAT(refused.err, Not(HasSubstr("computing")));
    EXPECT_EQ(run({"run", "sub/foreign.orrery", "--engine", engine, "--overwrite-outputs"}).exitCode, 0);
    ::unsetenv("XDG_CONFIG_HOME");
}

TEST_F(Tool, RunsTheTwoStepperSampleThroughTheSampleEngine) {
    const Finished done = run({"run", "--report", ORRERY_SAMPLES "/crop-two-steppers.orrery"});
    EXPECT_EQ(done.exitCode, 0) << done.err;
    EXPECT_THAT(done.out, HasSubstr("rows"));
    EXPECT_THAT(done.out, Not(HasSubstr("no numbers")));
}

} // namespace
} // namespace orrery::test
