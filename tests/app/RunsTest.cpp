// Runs that are kept: the list, files, and what a window does with them.
#include "app/ShellTest.h"

#include <QLabel>
#include <QTabWidget>
#include <QTableWidget>
#include <filesystem>

namespace orrery::test {
namespace {

class RunsTest : public ShellTest {
protected:
    RunsTest() { services->setStoreDirectory(files.path() + "runs"); }

    static QDialog& runsPanel(DocumentWindow& window) {
        action(window, "actionShowRuns").trigger();
        auto& panel = find<QDialog>(window, "runsPanel");
        EXPECT_TRUE(waitFor([&] { return panel.isVisible(); }));
        return panel;
    }
    static QString cell(QDialog& panel, int row, int column) {
        return find<QTableWidget>(panel, "runs").item(row, column)->text();
    }
    void runTwice(DocumentWindow& window) {
        run(window);
        edit(window, "20");
        window.document().saveToFile(*window.document().file().path());
        run(window);
    }
    [[nodiscard]] std::vector<KeptRunInfo> kept() const { return RunStore(services->storeDirectory()).runs(); }
};

TEST_F(RunsTest, TheListTellsOfEveryRunAndGivesEachBack) {
    DocumentWindow& window = open("crop-two-steppers.orrery");
    runTwice(window);
    const std::uint32_t rows = window.document().nRowsOfData();
    QDialog& panel = runsPanel(window);
    auto& table = find<QTableWidget>(panel, "runs");
    ASSERT_EQ(table.rowCount(), 2);
    EXPECT_TRUE(cell(panel, 0, 2).contains("20")) << cell(panel, 0, 2).toStdString();
    table.item(1, 6)->setCheckState(Qt::Checked);
    table.item(1, 7)->setText("the long one");
    EXPECT_TRUE(kept().back().pinned);
    EXPECT_EQ(kept().back().note, "the long one");

    table.selectRow(1);
    find<QPushButton>(panel, "show").click();
    EXPECT_NE(window.document().nRowsOfData(), rows);
    EXPECT_EQ(window.document().keeping().path(), kept().back().path);
    EXPECT_EQ(find<QTabWidget>(window, "tabView").currentWidget()->objectName(), "plotTab");
    EXPECT_TRUE(find<QLabel>(window, "runState").text().startsWith("Run of "));

    find<QPushButton>(panel, "openSetup").click();
    ASSERT_EQ(windows().size(), 2U);
    EXPECT_FALSE(windows().back()->document().file().path());
    EXPECT_NE(windows().back()->document().theDictionary().textOrEmpty(setup_key::runLength), "20");
    auto& remove = find<QPushButton>(panel, "remove");
    remove.click();
    answer(panel, "Remove the run", "Remove");
    answer(panel, "The run was not removed.", "OK"); // it is pinned
    EXPECT_EQ(table.rowCount(), 2);
    table.selectRow(0);
    remove.click();
    answer(panel, "Remove the run", "Remove");
    EXPECT_EQ(table.rowCount(), 1);
    EXPECT_EQ(kept().size(), 1U);
}

TEST_F(RunsTest, AResultsFileOpensWithoutItsSetupAndModelAndOnce) {
    DocumentWindow& window = open("crop-two-steppers.orrery");
    run(window);
    action(window, "actionKeepResultsAs").trigger();
    const std::string path = files.path() + "mine.nc";
    chooseFile(window, "saveResultsPanel", path);
    ASSERT_TRUE(std::filesystem::exists(path));
    const std::uint32_t rows = window.document().nRowsOfData();
    const std::string setup = *window.document().file().path();
    const std::string model = window.document().file().modelPath();
    window.close();
    ASSERT_TRUE(waitFor([&] { return windows().empty(); }));
    std::filesystem::remove(setup);
    std::filesystem::remove(model);

    controller->openFiles({path, path});
    ASSERT_EQ(windows().size(), 1U);
    DocumentWindow& opened = *windows().back();
    EXPECT_TRUE(opened.windowTitle().startsWith("mine"));
    EXPECT_EQ(opened.document().nRowsOfData(), rows);
    EXPECT_FALSE(opened.isWindowModified());
    EXPECT_EQ(alertOf(opened), nullptr);
    std::filesystem::copy_file(path, files.path() + "cut.nc");
    std::filesystem::resize_file(files.path() + "cut.nc", 3000);
    files.write("foreign.nc", "CDF\1 of another program");
    for (const char* name : {"cut.nc", "foreign.nc"}) {
        controller->openFiles({files.path() + name});
        answer(opened, QString("“%1” could not be opened.").arg(name), "OK");
    }
    EXPECT_EQ(windows().size(), 1U);
}

TEST_F(RunsTest, ASetupThatIsOpenedAgainOffersItsLastRun) {
    const std::string setup = sampleCopy("crop-two-steppers.orrery");
    DocumentWindow& first = open(setup);
    auto& noOffer = find<QPushButton>(first, "plotLastRun");
    action(first, "actionShowPlot").trigger();
    EXPECT_FALSE(noOffer.isVisible());
    run(first);
    const std::uint32_t rows = first.document().nRowsOfData();
    first.close();
    ASSERT_TRUE(waitFor([&] { return windows().empty(); }));

    DocumentWindow& again = open(setup);
    EXPECT_EQ(again.document().nRowsOfData(), 0U);
    action(again, "actionShowPlot").trigger();
    auto& offer = find<QPushButton>(again, "plotLastRun");
    ASSERT_TRUE(waitFor([&] { return offer.isVisible(); }));
    clickAt(centreOnScreen(offer));
    EXPECT_TRUE(waitFor([&] { return again.document().nRowsOfData() == rows; }));
    EXPECT_FALSE(offer.isVisible());
}

} // namespace
} // namespace orrery::test
