// What orrery-batch answers to files: JSON, round trips, and one line for everything that is wrong.
#include "batch/ToolFixture.h"
#include "platform/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace orrery::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

struct Refusal {
    const char* name;
    int exitCode;
    std::vector<std::string> arguments;
    const char* message; // part of it
};
class ToolRefuses : public Tool, public testing::WithParamInterface<Refusal> {};

TEST_P(ToolRefuses, WithOneLineAndNothingOnStandardOutput) {
    (void)m_folder.write("table.txt", resultTable);
    (void)m_folder.write("broken.orrery", "<Simulation><ModelPath>");
    (void)m_folder.write("partial.orrery", "<Simulation><ModelPath>model.xml</ModelPath><GCD/></Simulation>");
    (void)m_folder.write("short.txt", "run\twater\n");
    const Finished done = run(GetParam().arguments);
    EXPECT_EQ(done.exitCode, GetParam().exitCode);
    EXPECT_EQ(done.out, "");
    EXPECT_THAT(done.err, StartsWith("orrery-batch: "));
    EXPECT_THAT(done.err, HasSubstr(GetParam().message));
    EXPECT_EQ(std::ranges::count(done.err, '\n'), 1) << done.err;
}

const std::vector<std::string> plotTable{"plot", "setup.orrery", "--table", "table.txt"};
std::vector<std::string> plotWith(std::vector<std::string> options) {
    options.insert(options.begin(), plotTable.begin(), plotTable.end());
    return options;
}

INSTANTIATE_TEST_SUITE_P(
    Usage, ToolRefuses,
    testing::Values(
        Refusal{"noCommand", 2, {}, "--help"},
        Refusal{"unknownCommand", 2, {"shwo"}, "There is no command “shwo”. Did you mean “show”? See"},
        Refusal{"missingFile", 2, {"show"}, "SETUP"}, Refusal{"unknownOption", 2, {"show", "a", "--x"}, "--x"},
        Refusal{"summaryAndCsv", 2, {"results", "setup.orrery", "--summary", "--csv", "-"}, "--summary"},
        Refusal{"unknownKey", 2, {"new", "o", "--model", "m", "--set", "runLenght=1"}, "Did you mean “runLength”?"},
        Refusal{"noNumber", 2, {"new", "o", "--model", "m", "--set", "runLength=1,5"}, "does not end in a number."},
        Refusal{"noDate", 2, {"new", "o", "--model", "m", "--set", "startDay=2001-02-30"}, "yyyy-mm-dd"},
        Refusal{"noteWithoutText", 2, {"runs", "--note", "a.nc"}, "--note"},
        Refusal{"pinsAndLists", 2, {"runs", "--json", "--pin", "a.nc"}, "--json excludes --pin"},
        Refusal{"initWithoutValue", 2, {"new", "o", "--model", "m", "--init", "/A/b"}, "PORT=VALUE"},
        Refusal{"stepOfTwo", 2, {"new", "o", "--model", "m", "--step", "/A/b=0:1"}, "START:STEP:STOP"},
        Refusal{"stepOfFour", 2, {"new", "o", "--model", "m", "--step", "/A/b=0:1:2:3"}, "START:STEP:STOP"},
        Refusal{"holdWithoutNumber", 2, plotWith({"--hold", "day=x"}), "NAME=NUMBER: \u201cx\u201d is not"},
        Refusal{"scaleWithComma", 2, plotWith({"--scale", "#0=0,5"}), "Write 0.5, with a decimal point."},
        Refusal{"scaleBeyondTheRange", 2, plotWith({"--scale", "#0=1e99"}), "too large"}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Files, ToolRefuses,
    testing::Values(
        Refusal{"missingSetup", 1, {"show", "none.orrery"}, "none.orrery: "},
        Refusal{"setupIsFolder", 1, {"show", "."}, "directory"},
        Refusal{"setupIsNoXml", 1, {"sweep", "broken.orrery"}, "broken.orrery:1:"},
        Refusal{"requiredElements", 1, {"rewrite", "partial.orrery", "out.orrery"}, "RunLength"},
        Refusal{"missingModel", 1, {"model", "none.xml"}, "none.xml: "},
        Refusal{"modelWithoutRoot", 1, {"model", "setup.orrery"}, "No root"},
        Refusal{
            "noSuchRun", 1, {"runs", "--store", ".", "--pin", "none.nc"}, "none.nc: This is no run that is kept in"},
        Refusal{"missingTable",
                1,
                {"results", "setup.orrery", "--table", "none.txt"},
                "The data file, none.txt, was not found"},
        Refusal{"noRunYet", 1, {"results", "setup.orrery"}, "Zephyr.txt"},
        Refusal{"fewLabels", 1, {"results", "setup.orrery", "--table", "short.txt"}, "short.txt"},
        Refusal{"csvIntoNowhere", 1, {"results", "setup.orrery", "--table", "table.txt", "--csv", "no/c"}, "no/c: "},
        Refusal{"unknownPort",
                1,
                {"new", "o", "--model", "model.xml", "--step", "/Field/Crop/watr=0:1:2"},
                "model.xml: The model has no input port “/Field/Crop/watr”. Did you mean “/Field/Crop/water”?"},
        Refusal{"outputThatIsAnInput",
                1,
                {"new", "o", "--model", "model.xml", "--output", "/Field/Crop/water"},
                "no output port"},
        Refusal{"unknownAxis", 1, plotWith({"--axis1", "dya"}),
                "There is no sweep variable “dya”. Did you mean “day”?"},
        Refusal{"positionBeyond", 1, plotWith({"--include", "#2"}), "“Field/Crop/biomass”, “Field/Crop/yield”"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Tool, ReportsStandardOutputThatTakesNothing) {
    const Finished done = RunningTool(m_folder.path(), {"show", "setup.orrery"}, "/dev/full").finish();
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.err, HasSubstr("standard output: It cannot be written"));
}

TEST_F(Tool, MakesTheSetupThatItWasTold) {
    ASSERT_EQ(run({"new", "made.orrery", "--model", "model.xml", "--set", "runLength=1e1", "--set",
                   "startDay=2026-03-01", "--output", "/Field/Crop/yield=out=1.txt", "--output", "/Field/Crop/biomass",
                   "--init", "/Field/Crop/seed=0.5", "--step", "/Field/Crop/water=-1:.5:2"})
                  .exitCode,
              0);
    const json expected{
        {"modelPath", m_folder.path() + "model.xml"},
        {"startDay", "2026-03-01 00:00:00 +0000"},
        {"stepsPerDay", "10"},
        {"runLength", "1e1"},
        {"reportStep", "10"},
        {"dimensions", "{ 1, 1 }"},
        {"GCD", ""},
        {"outputs", json::array({{{"portPath", "/Field/Crop/yield"}, {"outputPath", "out=1.txt"}},
                                 {{"portPath", "/Field/Crop/biomass"}, {"outputPath", ""}}})},
        {"initializations",
         json::array({{{"portPath", "/Field/Crop/seed"}, {"coordinates", "{ 0, 0 }"}, {"value", "0.5"}}})},
        {"steppers",
         json::array({{{"portPath", "/Field/Crop/water"}, {"start", "-1"}, {"step", ".5"}, {"stop", "2"}}})}};
    EXPECT_EQ(run({"show", "made.orrery"}).json(), expected);
}

TEST_F(Tool, RewritesEverySetupToTheSameBytesTheSecondTime) {
    std::vector<std::string> setups{
        m_folder.write("roman.orrery", "<Simulation><ModelPath>caf\x8E</ModelPath><RunLength>\xC3\xA9</RunLength>"
                                       "<StepsPerDay/><ReportStep>&lt;</ReportStep><Dimensions/></Simulation>")};
    for (const auto& entry : std::filesystem::directory_iterator(ORRERY_SAMPLES)) {
        if (entry.path().extension() == ".orrery") setups.push_back(entry.path());
    }
    EXPECT_GE(setups.size(), 5U) << "the samples are gone";
    for (const std::string& path : setups) {
        ASSERT_EQ(run({"rewrite", path, "once"}).exitCode, 0) << path;
        ASSERT_EQ(run({"rewrite", "once", "twice"}).exitCode, 0) << path;
        EXPECT_EQ(readWholeFile(m_folder.path() + "once"), readWholeFile(m_folder.path() + "twice")) << path;
        json expected = run({"show", path}).json();
        const std::string folder = path.substr(0, path.rfind('/') + 1);
        if (folder != m_folder.path()) expected["modelPath"] = folder + std::string(expected["modelPath"]);
        EXPECT_EQ(expected, run({"show", "twice"}).json()) << path;
    }
}

TEST_F(Tool, PrintsResultsAsJsonAndCsv) {
    (void)m_folder.write("Zephyr.txt", resultTable);
    json summary = run({"results", "setup.orrery"}).json();
    EXPECT_EQ(summary.erase("simulationData"), 1U);
    EXPECT_EQ(run({"results", "setup.orrery", "--summary"}).json(), summary);

    EXPECT_EQ(run({"results", "setup.orrery", "--csv", "data.csv"}).out, "");
    const std::string csv = readWholeFile(m_folder.path() + "data.csv");
    EXPECT_THAT(csv, StartsWith("/Field/Crop/water,day,Field/Crop/biomass,Field/Crop/yield\n0,166,1.5,-1\n0,167,2.5,"));
    EXPECT_EQ(run({"results", "setup.orrery", "--csv", "-"}).out, csv);
}

TEST_F(Tool, NotesATableThatEndsEarly) {
    (void)m_folder.write("cut.txt", std::string(resultTable).substr(0, 60));
    const Finished done = run({"results", "setup.orrery", "--table", "cut.txt"});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_THAT(done.err, HasSubstr("of 6 rows"));
    EXPECT_EQ(done.json()["simulationData"].size(), 12U);
}

TEST_F(Tool, PlotsTheResponseThatIsNamedOrNothing) {
    (void)m_folder.write("Zephyr.txt", resultTable);
    const json curve = run({"plot", "setup.orrery", "--axis1", "/Field/Crop/water", "--hold", "day=167", "--include",
                            "Field/Crop/yield", "--scale", "Field/Crop/yield=0.5", "--json", "-"})
                           .json();
    EXPECT_EQ(curve["ranges"], json({{0, 3}}));
    EXPECT_EQ(curve["vertices"][7], 0) << "6 of at most 6, halved, lies in the middle";

    const json nothing = run({"plot", "setup.orrery", "--include", "#0", "--json", "-"}).json();
    EXPECT_EQ(nothing["dimensions"], 0);
    EXPECT_EQ(nothing["vertices"], json::array());
}

} // namespace
} // namespace orrery::test
