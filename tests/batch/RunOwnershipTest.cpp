// A run's table is its own, whatever became of the run before it. ORRERY_ROUNDS repeats each way that often.
#include "batch/ToolFixture.h"
#include "platform/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace orrery::test {
namespace {

/// Says that it runs and goes on writing a table of its own until it is killed.
constexpr const char* deafWriter =
    "trap '' TERM; echo writing; while :; do cp late.txt late.$$; mv late.$$ Zephyr.txt; sleep 0.01; done";
const std::string childWriter = "sh -c \"" + std::string(deafWriter) + "\"; true";
const std::string backgroundWriter = "setsid sh -c \"" + std::string(deafWriter) +
                                     "\" >mark 2>&1 & while [ ! -s mark ]; do sleep 0.01; done; echo writing";
constexpr const char* goodEngine = "cp ready.txt Zephyr.txt; sleep 0.15";

struct Way {
    const char* name;
    std::string engine;
    int signal; // 0: the run ends by itself
    bool clearsLock = false;
};
class EarlierRun : public Tool, public testing::WithParamInterface<Way> {
protected:
    void round() const;
    /// Whether anything that was started with our folder as its temporary directory still runs.
    [[nodiscard]] bool leftSomething() const;
};

bool EarlierRun::leftSomething() const {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "environ");
        const std::string environment(std::istreambuf_iterator<char>(file), {});
        if (environment.find("TMPDIR=" + m_folder.path()) != std::string::npos) return true;
    }
    return false;
}

void EarlierRun::round() const {
    const Way& way = GetParam();
    RunningTool earlier(m_folder.path(), {"run", "setup.orrery", "--no-results", "--engine", makeEngine(way.engine)});
    earlier.awaitError("writing");
    if (way.clearsLock) std::filesystem::remove(m_folder.path() + "orrery-run.lock");
    const std::string engine = makeEngine(goodEngine);
    RunningTool later(m_folder.path(), {"run", "setup.orrery", "--wait", "--engine", engine});
    if (way.clearsLock) later.awaitError("Another simulation");
    if (way.signal != 0) earlier.sendSignal(way.signal);
    (void)earlier.finish();
    const Finished done = later.finish();
    ASSERT_EQ(done.exitCode, 0) << done.err;
    EXPECT_THAT(done.out, testing::Not(testing::HasSubstr("777"))) << "the earlier run's table";
    EXPECT_FALSE(leftSomething());
}

TEST_P(EarlierRun, ReachesIntoNoLaterOne) {
    (void)m_folder.write("ready.txt", resultTable);
    std::string late = resultTable;
    late.replace(late.find("1.5"), 3, "777");
    (void)m_folder.write("late.txt", late);
    const char* const rounds = std::getenv("ORRERY_ROUNDS");
    for (int left = rounds == nullptr ? 1 : std::atoi(rounds); left > 0; --left)
        round();
}

INSTANTIATE_TEST_SUITE_P(Ways, EarlierRun,
                         testing::Values(Way{"interrupted", deafWriter, SIGTERM},
                                         Way{"killedWithAChildThatWrites", childWriter, SIGKILL},
                                         Way{"leavingABackgroundWriter", backgroundWriter, 0},
                                         Way{"killedWithABackgroundWriter", backgroundWriter + "; sleep 9", SIGKILL},
                                         Way{"whoseLockFileWasCleared", deafWriter, SIGTERM, true}),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace orrery::test
