#include "run/SetupProblems.h"

#include "platform/values/Numbers.h"

#include <gmock/gmock.h>

namespace orrery::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr auto warming = "/Farm/Weather/warming";

Entry stepper(const char* start, const char* step, const char* stop, const char* port = warming) {
    return {{"portPath", port}, {"start", start}, {"step", step}, {"stop", stop}};
}
Entry initialization(const char* value, const char* coordinates = "{ 0, 0 }") {
    return {{"portPath", warming}, {"coordinates", coordinates}, {"value", value}};
}
Entry output(const char* file, const char* port = "/Farm/Weather/rain") {
    return {{"portPath", port}, {"outputPath", file}};
}

class SetupProblemsTest : public testing::Test {
protected:
    [[nodiscard]] SetupProblems all(const SetupDictionary& setup) {
        return setupProblems(setup, {.ports = ports,
                                     .responses = 1,
                                     .calendar = currentCalendar(),
                                     .setupPath = "/fields/a.orrery",
                                     .fileExists = [](const std::string& path) { return path == "/fields/crop.xml"; },
                                     .availableMemory = [] { return std::uint64_t(1'000'000'000); }});
    }
    static SetupDictionary soundSetup() {
        SetupDictionary setup = defaultSetup();
        setup.setText(setup_key::modelPath, "crop.xml");
        return setup;
    }
    ModelTree model = readModelTree(ORRERY_SAMPLES "/crop.xml");
    PortFaults ports{model};
};

struct Parts {
    std::vector<std::pair<std::string_view, const char*>> settings = {};
    EntryList steppers = {};
    EntryList initializations = {};
    EntryList outputs = {};
};
/// A sound setup but for these parts, and the one problem that it then has.
struct ProblemCase {
    Parts parts;
    const char* words; // nullptr: nothing is wrong
    SetupPlace place = {};
    std::vector<std::string> mends = {}; // their values
};

const ProblemCase problemCases[] = {
    {{}, nullptr},
    {{.settings = {{"dimensions", "{1,1}"}},
      .steppers = {stepper("0", "0.1", "0.7")},
      .outputs = {output("a"), output("a"), output("")}},
     nullptr},
    {{.steppers = {stepper("1", "-0.25", "0")}}, nullptr},
    {{.initializations = {initialization("{ 1, 2 }")}}, nullptr},
    {{.settings = {{"modelPath", ""}}}, "No model is chosen.", {"modelPath"}},
    {{.settings = {{"modelPath", "x.xml"}}}, "The model file “/fields/x.xml” does not exist.", {"modelPath"}},
    {{.settings = {{"stepsPerDay", "0"}}}, "Steps per day is 0, so the run has no rows.", {"stepsPerDay"}},
    {{.settings = {{"stepsPerDay", " "}}},
     "Steps per day is empty and counts as 0, so the run has no rows.",
     {"stepsPerDay"}},
    {{.settings = {{"runLength", "0"}}}, "Run length is 0 and counts as 1 day.", {"runLength"}},
    {{.settings = {{"runLength", "1e99"}}}, "Run length is “1e99”, which is too large.", {"runLength"}},
    {{.settings = {{"reportStep", "1,5"}}}, "Report step is “1,5”, of which only 1 is read.", {"reportStep"}, {"1.5"}},
    {{.settings = {{"reportStep", "2000"}}},
     "The run of 100 days is shorter than one report interval (2000 time steps at 10 a day), so it has no rows.",
     {"reportStep"}},
    {{.settings = {{"dimensions", "5"}}},
     "Dimensions are “5”, which is read as { 5, 0 }.",
     {"dimensions"},
     {"{ 1, 1 }"}},
    {{.settings = {{"dimensions", "{ 0, 2.5 }"}}},
     "Dimensions are “{ 0, 2.5 }”; both must be whole numbers from 1 on.",
     {"dimensions"},
     {"{ 1, 1 }"}},
    {{.outputs = {output("", "/Farm/Weather/radation")}},
     "The model has no output port “/Farm/Weather/radation”. Did you mean “/Farm/Weather/radiation”? (Output 1)",
     {"outputs", 0, "portPath"},
     {"/Farm/Weather/radiation"}},
    {{.steppers = {Entry{}}},
     "No port is chosen: drag one here from the model. (Stepper 1)",
     {"steppers", 0, "portPath"}},
    {{.steppers = {stepper("0", "", "")}},
     "Stepper /Farm/Weather/warming: step and stop are empty and count as 0.",
     {"steppers", 0, "step"}},
    {{.steppers = {stepper("{ 1 }", "1", "3")}},
     "Stepper /Farm/Weather/warming: its start is “{ 1 }”, which is not a number and counts as 0.",
     {"steppers", 0, "start"},
     {"1"}},
    {{.steppers = {stepper("1", "0", "3")}},
     "Stepper /Farm/Weather/warming: its step is 0, so it has no values and the run no rows.",
     {"steppers", 0, "step"}},
    {{.initializations = {initialization("")}},
     "Initialization /Farm/Weather/warming: its value is empty.",
     {"initializations", 0, "value"}},
    {{.initializations = {initialization("1", "{ 2; 3 }")}},
     "Initialization /Farm/Weather/warming: its coordinates are “{ 2; 3 }”, which is read as { 2, 0 }.",
     {"initializations", 0, "coordinates"},
     {"{ 0, 0 }"}},
    {{.steppers = {stepper("0", "1", "1"), stepper("0", "1", "1", "Weather/warming")}},
     "Steppers 1 and 2 both sweep “Weather/warming”.",
     {"steppers", 1, "portPath"}},
    {{.steppers = {stepper("0", "1", "1")}, .initializations = {initialization("3")}},
     "“/Farm/Weather/warming” is swept by stepper 1 and given a value by initialization 1.",
     {"initializations", 0, "portPath"}},
    {{.settings = {{"dimensions", "{ 2, 1 }"}},
      .outputs = {output("out/../a.txt"), output("b"), output("/fields/a.txt")}},
     "Outputs 1 and 3 have the same result file, “/fields/a.txt”.",
     {"outputs", 2, "outputPath"}},
    {{.settings = {{"dimensions", "{ 2, 1 }"}}, .outputs = {output("a.orrery")}},
     "Output 1 would replace the setup file, “/fields/a.orrery”.",
     {"outputs", 0, "outputPath"}},
    {{.steppers = {stepper("0", "0.3", "1")}},
     "Stepper /Farm/Weather/warming: its last value is 0.90000004, because steps of 0.3 from 0 do not end at its stop "
     "1.",
     {"steppers", 0, "stop"},
     {"0.90000004", "1.2"}},
    {{.steppers = {stepper("0", "0.3", "0.9")}},
     "Stepper /Farm/Weather/warming: its last value is 0.6, because steps of 0.3 from 0 do not end at its stop 0.9, "
     "counted in single precision.",
     {"steppers", 0, "stop"},
     {"0.6", "0.90000004"}},
    {{.steppers = {stepper("0", "1", "9999999")}},
     "The results, 1000000000 rows of 1 values, would need 4 GB of memory, but only 1 GB are free. Give the steppers "
     "fewer values, report less often or record fewer outputs.",
     {"steppers", 0, "step"}},
    {{.steppers = {stepper("0", "1", "1e8")}},
     "The sweep would have 10000000100 rows; at most 4294967295 are possible. Give the steppers fewer values or report "
     "less often.",
     {"steppers", 0, "step"}},
};

TEST_F(SetupProblemsTest, AreSaidWithTheirPlaceAndMends) {
    for (const ProblemCase& row : problemCases) {
        SetupDictionary setup = soundSetup();
        for (const auto& [key, text] : row.parts.settings) {
            setup.setText(key, text);
        }
        setup.setList(setup_key::steppers, row.parts.steppers);
        setup.setList(setup_key::initializations, row.parts.initializations);
        setup.setList(setup_key::outputs, row.parts.outputs);
        std::vector<SetupProblem> expected;
        if (row.words != nullptr) expected.push_back({row.words, row.place});
        for (const std::string& value : row.mends) {
            const bool isStop = row.place.field == "stop";
            expected[0].mends.push_back({(isStop ? "Stop at " : "Use ") + value, value});
        }
        EXPECT_EQ(all(setup).shown, expected)
            << (row.words == nullptr ? "nothing" : row.words)
            << "\nfound: " << (all(setup).shown.empty() ? "nothing" : all(setup).shown[0].words);
    }
}

TEST_F(SetupProblemsTest, OfStopsAreMendedForGood) {
    int mended = 0;
    for (int step = 1; step < 40; ++step) {
        for (int stop = 1; stop < 20; ++stop) {
            const std::string steps = shortestText(static_cast<float>(step) / 70.0F);
            SetupDictionary setup = soundSetup();
            setup.setList(setup_key::steppers, {stepper("0.1", steps.c_str(), std::to_string(stop).c_str())});
            for (const SetupProblem& problem : all(setup).shown) {
                EXPECT_THAT(problem.mends, SizeIs(2)) << problem.words;
                for (const SetupMend& mend : problem.mends) {
                    setup.setList(setup_key::steppers, {stepper("0.1", steps.c_str(), mend.value.c_str())});
                    EXPECT_THAT(all(setup).shown, IsEmpty()) << problem.words << mend.value;
                    ++mended;
                }
            }
        }
    }
    EXPECT_GT(mended, 500);
}

TEST_F(SetupProblemsTest, OfAHundredThousandRowsAreCountedOut) {
    SetupDictionary setup = soundSetup();
    setup.setList(setup_key::outputs, EntryList(100'000, output("same.txt", "/Farm/Weather/x")));
    setup.setText(setup_key::dimensions, "{ 2, 2 }");
    EXPECT_THAT(all(setup).shown, SizeIs(SetupProblems::mostShown));
    EXPECT_EQ(all(setup).moreWords(), "and 199899 more problems");
}

} // namespace
} // namespace orrery::test
