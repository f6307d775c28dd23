// What becomes of a run's results when the next one comes, or the program ends.
#include "document/DocumentFixture.h"
#include "document/KeepingPreferences.h"
#include "platform/Files.h"
#include "plot/data/PlotRows.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace orrery::test {
namespace {

using testing::HasSubstr;

constexpr const char* sixRows = "row\train\tday\tbiomass\tyield\n"
                                "0 0 1\t1\t10\n1 0 2\t2\t20\n2 0 3\t3\t30\n"
                                "3 1 1\t4\t40\n4 1 2\t5\t50\n5 1 3\t6\t60\n";

class RunKeepingTest : public CropTest {
protected:
    [[nodiscard]] std::string storePath() const { return files.path() + "store"; }
    DocumentServices keepingServices(std::uint64_t largestHeldTable = 0) {
        DocumentServices keeping = services();
        keeping.storeDirectory = storePath();
        keeping.largestHeldTable = largestHeldTable;
        return keeping;
    }
    void openCrop(MyDocument& opened) {
        opened.readFromFile(files.path() + "crop.orrery");
        show(opened);
        opened.awakeFromNib();
    }
    void run(MyDocument& running) {
        running.runSimulation();
        launcher.last().write("day 1\n");
        temporary.write("Zephyr.txt", sixRows);
        launcher.last().end();
    }
    [[nodiscard]] std::vector<KeptRunInfo> kept() const { return RunStore(storePath()).runs(); }
    static std::vector<float> cells(const RunResults& results) {
        std::vector<float> all;
        forEachRows(results, [&](std::uint32_t, std::span<const float> rows) {
            all.insert(all.end(), rows.begin(), rows.end());
        });
        return all;
    }
};

TEST_F(RunKeepingTest, ARunIsKeptAndOpensWithoutItsSetupModelAndTable) {
    MyDocument running(keepingServices());
    openCrop(running);
    run(running);
    ASSERT_EQ(kept().size(), 1U) << window.status;
    EXPECT_EQ(running.keeping().path(), kept().front().path);
    const auto expected = cells(running.results());
    const auto setup = recordFile(files.path() + "crop.orrery").bytes;
    for (const char* gone : {"crop.orrery", "crop.xml"}) {
        std::filesystem::remove(files.path() + gone);
    }
    std::filesystem::remove(temporary.path() + "/Zephyr.txt");

    MyDocument later(keepingServices());
    later.openRun(kept().front().path);
    show(later);
    later.awakeFromNib();
    EXPECT_EQ(cells(later.results()), expected);
    EXPECT_TRUE(window.sheets.empty()) << "the model is not needed";
    EXPECT_EQ(window.status, "day 1\n");
    EXPECT_FALSE(later.file().path());
    EXPECT_TRUE(later.file().isUnsavedCopy());
    EXPECT_EQ(later.theDictionary().textOrEmpty(setup_key::runLength), "3");
    EXPECT_THAT(outcomeText(later.runControl().outcome(), currentDate()), HasSubstr("Run of "));
    const std::string copy = files.path() + "copy.nc";
    EXPECT_TRUE(later.keepResultsAs(copy));
    EXPECT_EQ(openResultsFile(copy).record.setup.bytes, setup);
}

TEST_F(RunKeepingTest, TheUserLimitsWhatIsKept) {
    MyDocument running(keepingServices());
    openCrop(running);
    setKeepingPreferences(defaults, {.keeps = false, .limits = {}});
    run(running);
    EXPECT_TRUE(kept().empty());
    EXPECT_TRUE(running.keeping().path().empty());
    setKeepingPreferences(defaults, {.keeps = true, .limits = {.runs = 1}});
    run(running);
    const std::string first = kept().at(0).path;
    run(running);
    ASSERT_EQ(kept().size(), 1U);
    EXPECT_NE(kept().front().path, first);
    RunStore(storePath()).setPinned(kept().front().path, true);
    run(running);
    EXPECT_EQ(kept().size(), 2U) << "what is pinned stays, and what was just kept";
}

TEST_F(RunKeepingTest, WhatCannotBeKeptIsToldAndShownAllTheSame) {
    files.write("store", "not a folder");
    MyDocument running(keepingServices());
    openCrop(running);
    run(running);
    EXPECT_THAT(window.status, HasSubstr("The results were not kept: "));
    EXPECT_EQ(running.nRowsOfData(), 6U);
    EXPECT_TRUE(running.runControl().outcome().isWhole());
    MyDocument large(keepingServices(1)); // whose table goes into a file elsewhere then
    openCrop(large);
    large.lookForLastRun();
    run(large);
    EXPECT_TRUE(large.results().stored) << window.status;
}

TEST_F(RunKeepingTest, ATableThatIsTooLargeToHoldIsReadFromAFile) {
    run(document);
    const auto expected = cells(document.results());
    for (const bool keeps : {true, false}) {
        SCOPED_TRACE(keeps);
        setKeepingPreferences(defaults, {.keeps = keeps, .limits = {}});
        MyDocument running(keepingServices(1));
        openCrop(running);
        run(running);
        ASSERT_TRUE(running.results().stored) << window.status;
        EXPECT_EQ(running.results().table.cells.size(), 0U);
        EXPECT_EQ(cells(running.results()), expected);
        EXPECT_EQ(kept().size(), 1U);
        EXPECT_EQ(running.keeping().path().empty(), !keeps);
        EXPECT_FALSE(fileExists(temporary.path() + "/Zephyr.txt.nc"));
        EXPECT_TRUE(running.keepResultsAs(files.path() + "copy.nc"));
        EXPECT_EQ(cells(openResultsFile(files.path() + "copy.nc").results), expected);
    }
}

TEST_F(RunKeepingTest, OnlyItsOwnResultsAreKeptAndNoneAreTakenWhileARunGoesOn) {
    MyDocument running(keepingServices());
    openCrop(running);
    temporary.write("Zephyr.txt", sixRows);
    running.runSimulation();
    launcher.last().end();
    ASSERT_TRUE(running.runControl().outcome().staleSince);
    EXPECT_TRUE(kept().empty()) << "the table is an earlier run's";
    run(running);
    ASSERT_EQ(kept().size(), 1U);

    running.runSimulation();
    EXPECT_THROW(running.openResults(kept().front().path), OrreryError);
    running.abortSimulation();
    launcher.last().end();
    running.lookForLastRun();
    ASSERT_TRUE(running.keeping().lastRun());
    running.openResults(running.keeping().lastRun()->path);
    EXPECT_EQ(running.nRowsOfData(), 6U);
    EXPECT_EQ(running.file().path(), files.path() + "crop.orrery") << "the document stays what it was";
    EXPECT_THROW(running.openResults(files.path() + "crop.orrery"), OrreryError);
    EXPECT_EQ(running.nRowsOfData(), 6U);
}

TEST_F(RunKeepingTest, OfALongTextTheEndsAreKept) {
    EngineText text;
    const std::string line(1000, 'x');
    std::size_t length = 0;
    for (int i = 0; i < 40'000; ++i, length += line.size() + 4) {
        text.append("é" + line + "\n.");
    }
    text.append("the end");
    const std::string whole = text.text();
    EXPECT_LT(whole.size(), EngineText::headBytes + (2 * EngineText::tailBytes) + 100);
    EXPECT_THAT(whole, HasSubstr("bytes are left out here"));
    EXPECT_TRUE(whole.ends_with("the end") && whole.starts_with("éx"));
}

} // namespace
} // namespace orrery::test
