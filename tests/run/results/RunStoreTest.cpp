// Kept runs come and go: what is in the way of a removal, what a limit takes, and what is not ours.
#include "run/results/RunStore.h"

#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "run/results/ResultsFile.h"
#include "support/TemporaryFolder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netcdf.h>

#include <filesystem>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RunStoreTest : public testing::Test {
protected:
    /// A run of ten rows that started at that minute, in the store.
    std::string keepRun(int minute, const std::string& setup = "/home/a/wheat.orrery") {
        RunResults results;
        IndependentVariable day;
        day.setName("day");
        day.setStep(1);
        day.setStride(1);
        day.setStridesPerCycle(10);
        results.grid = {.variables = {day}, .nRowsOfData = 10};
        results.table.rowsFound = 9;
        results.notes = {"1 of 10 rows is missing."};
        RunRecord record;
        record.setup = {.path = setup, .sha256 = "", .size = 0, .bytes = "<Simulation>\x8A</Simulation>"};
        record.engineEnd = "the engine ended with exit code 3";
        record.started = fmt::format("2026-11-26 09:{:02}:00 +0000", minute);
        std::string path = store.newPath(setup, record.started);
        writeResultsFile(path, results, record);
        return path;
    }
    std::vector<std::string> paths(const std::optional<std::string>& setup = {}) const {
        std::vector<std::string> paths;
        for (const KeptRunInfo& run : store.runs(setup)) {
            paths.push_back(run.path);
        }
        return paths;
    }
    template <class Act>
    static std::string refusal(Act act) {
        try {
            act();
        } catch (const OrreryError& error) {
            return error.what();
        }
        return "";
    }

    test::TemporaryFolder folder;
    std::string directory = folder.path() + "data/runs";
    RunStore store{directory};
};

TEST_F(RunStoreTest, ListsWhatARunWasTheNewestFirst) {
    EXPECT_THAT(store.runs(), IsEmpty()) << "there is no directory yet";
    EXPECT_THAT(store.applyLimits({}, ""), IsEmpty());
    const std::string late = keepRun(30);
    const std::string early = keepRun(10);
    const std::string other = keepRun(20, "/home/a/maize.orrery");
    EXPECT_EQ(late, directory + "/wheat 2026-11-26 09.30.00.nc");
    EXPECT_THAT(paths(), ElementsAre(late, other, early));
    EXPECT_THAT(paths("/home/a/maize.orrery"), ElementsAre(other));
    const KeptRunInfo run = store.runs().front();
    EXPECT_EQ(run.setup, "<Simulation>\x8A</Simulation>") << "its bytes, whatever they stand for";
    EXPECT_EQ(run.engineEnd, "the engine ended with exit code 3");
    EXPECT_EQ(std::pair(run.rows, run.rowsFound), std::pair(std::size_t{10}, std::size_t{9}));
    EXPECT_EQ(run.bytes, std::filesystem::file_size(late));
    EXPECT_EQ(run.note, "1 of 10 rows is missing.");
}

TEST_F(RunStoreTest, AnIndexSaysWhatTheFilesSay) {
    const std::string path = keepRun(10);
    const std::string other = keepRun(20, "/home/a/maize.orrery");
    const std::string index = directory + "/.orrery-runs";
    const KeptRunInfo read = store.runs().back();
    ASSERT_TRUE(fileExists(index));
    const auto written = fileIdentity(index);
    const KeptRunInfo known = store.runs().back();
    EXPECT_EQ(fileIdentity(index), written) << "nothing was new";
    const auto all = [](const KeptRunInfo& run) {
        return std::tuple(run.path, run.setupPath, run.setup, run.started, run.ended, run.engineEnd, run.rows,
                          run.rowsFound, run.bytes, run.note);
    };
    EXPECT_EQ(all(known), all(read));
    std::filesystem::rename(other, path);
    EXPECT_EQ(store.runs().back().setupPath, "/home/a/maize.orrery") << "another file under a known name";
    replaceFile(index, readWholeFile(index).replace(100, 1, "\xDD"));
    EXPECT_THAT(paths(), ElementsAre(path)) << "a damaged index is none";
}

TEST_F(RunStoreTest, NamesAreNewAndFitForAFile) {
    const std::string first = keepRun(0);
    EXPECT_EQ(store.newPath("/home/a/wheat.orrery", "2026-11-26 09:00:00 +0000"),
              directory + "/wheat 2026-11-26 09.00.00 (2).nc");
    EXPECT_EQ(store.newPath("/home/a/.orrery", ""), directory + "/orrery.nc");
    EXPECT_EQ(store.newPath("", "yesterday"), directory + "/run.nc");
    EXPECT_EQ(store.newPath("/" + std::string(149, 'a') + "ä.orrery", ""), // which the cut would split
              directory + "/" + std::string(149, 'a') + ".nc");
}

TEST_F(RunStoreTest, PinAndNoteLastAndLeaveTheResultsAlone) {
    const std::string path = keepRun(0);
    const auto before = fileIdentity(path);
    store.setPinned(path, true);
    EXPECT_EQ(store.runs().front().note, "1 of 10 rows is missing.") << "a pin is no note";
    store.setNote(path, "for the \"paper\"\nfig. 2 – größte");
    EXPECT_TRUE(store.runs().front().pinned);
    EXPECT_EQ(store.runs().front().note, "for the \"paper\"\nfig. 2 – größte");
    store.setNote(path, "");
    store.setPinned(path, false);
    EXPECT_EQ(store.runs().front().note, "") << "the user has taken it away";
    EXPECT_EQ(fileIdentity(path), before);
    EXPECT_THAT(refusal([&] { store.setNote(path, std::string(100000, 'x')); }), HasSubstr("The note is longer"));
    replaceFile(path + ".json", "{\"pinned\": fal");
    EXPECT_TRUE(store.runs().front().pinned) << "it may have been";
}

struct LimitCase {
    const char* name;
    StoreLimits limits; // in bytes: of that many files
    bool keepsOldest;
    std::vector<int> stay; // by the minutes 0 … 4, of which 1 is pinned and 2 is open
};
class RunStoreLimits : public RunStoreTest, public testing::WithParamInterface<LimitCase> {};

TEST_P(RunStoreLimits, TakeTheOldestThatMayGo) {
    std::vector<std::string> runs;
    runs.reserve(5);
    for (int minute = 0; minute < 5; ++minute) {
        runs.push_back(keepRun(minute));
    }
    store.setPinned(runs[1], true);
    std::optional<KeptRun> open = openResultsFile(runs[2]);
    const StoreLimits limits{GetParam().limits.runs, GetParam().limits.bytes * std::filesystem::file_size(runs[0])};
    const auto removed = store.applyLimits(limits, GetParam().keepsOldest ? runs[0] : runs[4]);
    std::vector<std::string> stay;
    for (const int minute : GetParam().stay) {
        stay.insert(stay.begin(), runs[static_cast<std::size_t>(minute)]);
    }
    EXPECT_EQ(paths(), stay);
    EXPECT_EQ(removed.size(), runs.size() - stay.size());
    EXPECT_THAT(refusal([&] { store.remove(runs[1]); }), HasSubstr("is pinned"));
    EXPECT_THAT(refusal([&] { store.remove(runs[2]); }), HasSubstr("is open"));
    open.reset();
    store.remove(runs[2]);
    EXPECT_FALSE(fileExists(runs[2]));
}

INSTANTIATE_TEST_SUITE_P(Limits, RunStoreLimits,
                         testing::Values(LimitCase{"exactlyFull", {4, 4}, false, {0, 1, 2, 3, 4}},
                                         LimitCase{"byNumber", {3, 20}, false, {1, 2, 3, 4}},
                                         LimitCase{"theOpenOneCountsAsGone", {2, 20}, false, {1, 2, 3, 4}},
                                         LimitCase{"bySize", {20, 1}, false, {1, 2, 4}},
                                         LimitCase{"theKeptOneCounts", {1, 20}, true, {0, 1, 2}},
                                         LimitCase{"theKeptOneStaysWhateverItsSize", {20, 0}, false, {1, 2, 4}}),
                         [](const auto& row) { return row.param.name; });

TEST_F(RunStoreTest, LeavesWhatIsNotOurs) {
    const std::string run = keepRun(0);
    int foreign = 0;
    ASSERT_EQ(nc_create((directory + "/foreign.nc").c_str(), NC_NETCDF4, &foreign), NC_NOERR);
    nc_close(foreign);
    replaceFile(directory + "/cut.nc", readWholeFile(run).substr(0, 3000));
    replaceFile(folder.path() + "elsewhere.nc", readWholeFile(run));
    std::filesystem::create_symlink(folder.path() + "elsewhere.nc", directory + "/link.nc");
    const std::string litter = directory + "/.orrery-0123456789abcdef";
    replaceFile(litter, "of a killed save");
    std::filesystem::last_write_time(litter, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
    EXPECT_THAT(paths(), ElementsAre(run));
    EXPECT_THAT(store.applyLimits({.runs = 0}, ""), ElementsAre(run));
    EXPECT_FALSE(fileExists(litter));
    for (const char* name : {"foreign.nc", "cut.nc", "link.nc", "../../elsewhere.nc", "no.nc"}) {
        const std::string path = directory + '/' + name;
        EXPECT_NE(refusal([&] { store.remove(path); }), "") << name;
        EXPECT_EQ(fileExists(path), std::string(name) != "no.nc") << name;
    }
}

TEST_F(RunStoreTest, SaysWhyThereCanBeNoStore) {
    replaceFile(folder.path() + "data", "a file");
    EXPECT_THAT(refusal([&] { (void)store.newPath("a", ""); }), HasSubstr("data/runs: The folder of kept runs cannot"));
    EXPECT_THAT(refusal([&] { (void)store.runs(); }), HasSubstr("cannot be read"));
}

} // namespace
} // namespace orrery
