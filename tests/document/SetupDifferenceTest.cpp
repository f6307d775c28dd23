// What a line of the list of runs says of a setup that was changed between two of them.
#include "document/setup/SetupDifference.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <functional>

namespace orrery {
namespace {

Entry stepper(const std::string& port, const std::string& start, const std::string& stop) {
    return {{"portPath", port}, {"start", start}, {"stop", stop}, {"step", "1"}};
}

SetupDictionary setupBefore() {
    SetupDictionary setup = defaultSetup();
    setup.setText(setup_key::modelPath, "/home/models/crop.xml");
    setup.setList(setup_key::outputs, {{{"portPath", "/Farm/Crop/yield"}, {"outputPath", "/tmp/a.txt"}}});
    setup.setList(setup_key::initializations,
                  {{{"portPath", "/Farm/Soil/water"}, {"coordinates", "{ 0, 0 }"}, {"value", "2"}},
                   {{"portPath", "/Farm/Soil/water"}, {"coordinates", "{ 1, 0 }"}, {"value", "3"}}});
    setup.setList(setup_key::steppers,
                  {stepper("/Farm/Weather/rain", "1", "3"), stepper("/Farm/Soil/depth", "0", "1")});
    return setup;
}

struct DifferenceCase {
    const char* name;
    std::function<void(SetupDictionary&)> change;
    const char* words;
};
class SetupDifference : public testing::TestWithParam<DifferenceCase> {};

TEST_P(SetupDifference, IsSaidInALine) {
    const SetupDictionary before = setupBefore();
    SetupDictionary after = setupBefore();
    GetParam().change(after);
    EXPECT_EQ(setupDifference(before, after), GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Changes, SetupDifference,
    testing::Values(
        DifferenceCase{"sameNumbersInOtherWords",
                       [](auto& setup) {
                           setup.setText(setup_key::runLength, "100.0");
                           setup.setText(setup_key::dimensions, "{1,1}");
                           setup.setText(setup_key::gcd, "0");
                           setup.mutableList("steppers")[0].set("stop", "3.0");
                       },
                       ""},
        DifferenceCase{"settings",
                       [](auto& setup) {
                           setup.setText(setup_key::modelPath, "/home/models/crop2.xml");
                           setup.setText(setup_key::runLength, "");
                           setup.setStartDay(dateWithString("2001-06-01 00:00:00 +0000"));
                       },
                       "model path crop2.xml (was crop.xml); start day 2001-06-01 (was 2001-01-01); "
                       "run length nothing (was 100)"},
        DifferenceCase{"anotherFolder", [](auto& setup) { setup.setText(setup_key::modelPath, "/mnt/crop.xml"); },
                       "model path /mnt/crop.xml (was /home/models/crop.xml)"},
        DifferenceCase{"stepperAndOutputs",
                       [](auto& setup) {
                           setup.mutableList("steppers")[0].set("stop", "5");
                           setup.mutableList("outputs")[0].set("outputPath", "/tmp/b.txt");
                           setup.mutableList("outputs").push_back({{"portPath", "/Farm/Crop/biomass"}});
                       },
                       "yield to b.txt (was a.txt); output added: biomass; rain 1…5 by 1 (was 1…3 by 1)"},
        DifferenceCase{"theRightOneOfTwoRowsOfAPort",
                       [](auto& setup) { setup.mutableList("initializations")[1].set("value", "4"); },
                       "water at { 1, 0 } 4 (was 3)"},
        DifferenceCase{"oneOfTwoRowsGone",
                       [](auto& setup) {
                           setup.mutableList("initializations").erase(setup.mutableList("initializations").begin());
                       },
                       "initialization removed: water"},
        DifferenceCase{"portsThatShareAName",
                       [](auto& setup) { setup.mutableList("steppers")[1] = stepper("/Farm/Pond/depth", "0", "1"); },
                       "stepper added: /Farm/Pond/depth 0…1 by 1; stepper removed: /Farm/Soil/depth"},
        DifferenceCase{
            "order", [](auto& setup) { std::swap(setup.mutableList("steppers")[0], setup.mutableList("steppers")[1]); },
            "steppers in another order"},
        DifferenceCase{"ofManyOnlyTheFirst",
                       [](auto& setup) {
                           for (int i = 0; i < 100000; ++i) {
                               setup.mutableList("outputs").push_back({{"portPath", fmt::format("/Farm/o{}", i)}});
                           }
                       },
                       "outputs added: o0, o1, o2 and 99,997 more"}),
    [](const auto& row) { return row.param.name; });

TEST(SetupDifferenceOfFiles, SaysWhenOneCannotBeRead) {
    EXPECT_EQ(setupDifference("<Simulation>", "<Simulation/>"), "a setup that cannot be read");
    EXPECT_EQ(setupDifference("not a setup", "not a setup"), "");
}

} // namespace
} // namespace orrery
