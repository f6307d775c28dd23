#include "run/ResponseVariables.h"

#include "platform/values/OrreryError.h"
#include "run/HeaderNotes.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(BooleanValue, ReadsLeniently) {
    for (const char* yes : {"1", "yes", "True", "t", "Y", " \t+007", "-1", "00y", "9x"}) {
        EXPECT_TRUE(booleanValue(yes)) << yes;
    }
    for (const char* no : {"", "0", "no", "false", "000", "on", "--1", "+ 1", ".5"}) {
        EXPECT_FALSE(booleanValue(no)) << no;
    }
}

TEST(HeaderLabels, StopAtTheLimitAndAreNoneOfNothing) {
    EXPECT_THAT(headerLabels("\n"), ElementsAre(""));
    EXPECT_THAT(headerLabels(""), IsEmpty());
    const auto longLine = headerLabels(std::string(9990, 'x') + "\t1234567890\t12\n");
    EXPECT_THAT(longLine, ElementsAre(std::string(9990, 'x'), "1234567"));
}

std::vector<ResponseVariable> recorders(const std::vector<std::string>& names) {
    std::vector<ResponseVariable> result;
    result.reserve(names.size());
    for (const std::string& name : names) {
        result.emplace_back(name, "id-" + name);
    }
    return result;
}

TEST(ResponseVariables, NeedALabelForEveryRecorder) {
    const auto two = recorders({"F/x", "F/y"});
    EXPECT_THAT(matchResponseVariables(two, {}, 1, "t").variables, IsEmpty());
    try {
        (void)matchResponseVariables(two, {"<html>", "day", "x"}, 1, "t.txt");
        FAIL() << "not refused";
    } catch (const OrreryError& error) {
        EXPECT_EQ(error.place().text(), "t.txt:1");
        EXPECT_THAT(error.problem(), testing::AllOf(HasSubstr("3 labels"), HasSubstr("need 4"), HasSubstr("<html>")));
    }
}

// ---- What is odd about a header: sweep variables rain and day, recorded ports of the names given

struct HeaderCase {
    const char* name;
    std::vector<std::string> ports;
    std::vector<std::string> labels;
    std::vector<const char*> note; // parts of the one note; none: nothing is odd
};
class Header : public testing::TestWithParam<HeaderCase> {};

TEST_P(Header, IsNoted) {
    const HeaderCase& row = GetParam();
    std::vector<IndependentVariable> variables(2);
    variables[0].setName("/F/rain");
    variables[1].setName("day");
    const auto ports = recorders(row.ports);
    const auto isInput = [](std::string_view name) { return name == "rain" || name == "seed"; };
    const auto notes =
        headerNotes(row.labels, matchResponseVariables(ports, row.labels, 2, "t"), {variables, ports, isInput});
    ASSERT_EQ(notes.size(), row.note.empty() ? 0U : 1U) << testing::PrintToString(notes);
    for (const char* part : row.note) {
        EXPECT_THAT(notes[0], HasSubstr(part));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Oddities, Header,
    testing::Values(
        HeaderCase{"asPromised", {"F/x", "F/y"}, {"row", "rain", "day", "x", "y"}, {}},
        HeaderCase{"engineThatLabelsOtherwise", {"F/x"}, {"#", "p1", "t", "x"}, {}},
        HeaderCase{"timeFirst", {"F/x"}, {"seed", "rain", "day", "x"}, {}}, // a row's number may have any name
        HeaderCase{"tabAtTheEnd", {"F/x"}, {"row", "rain", "day", "x", ""}, {}},
        HeaderCase{
            "otherStepper", {"F/x"}, {"row", "seed", "day", "x"}, {"variables “seed”, “day”", "are “rain”, “day”"}},
        HeaderCase{"otherOrder", {"F/x"}, {"row", "day", "rain", "x"}, {"variables “day”, “rain”"}},
        HeaderCase{
            "shiftedColumn",
            {"F/x", "F/yield"},
            {"row", "rain", "day", "biomass", "yield"},
            {"recorded port of the model: “biomass”.", "by position: “yield” may show the numbers of “biomass”"}},
        HeaderCase{"unknownLast", {"F/x", "F/y"}, {"row", "rain", "day", "x", "z"}, {"model: “z”. Columns"}},
        HeaderCase{"moreLabels", {"F/x"}, {"row", "rain", "day", "x", "z"}, {"has 5 labels", "have 4", "from “z” on"}},
        HeaderCase{"portsOfOneName",
                   {"F/A/x", "F/B/x"},
                   {"row", "rain", "day", "x", "x"},
                   {"2 recorded ports are named “x”: “F/A/x”, “F/B/x”", "under “F/B/x”"}},
        HeaderCase{"labelTwice", {"F/x", "F/y", "F/z"}, {"row", "rain", "day", "x", "x", "y"}, {"label “x” 2 times"}}),
    [](const auto& row) { return row.param.name; });

TEST(Header, OfCarriageReturnOrNoTextIsToldApart) {
    const auto ports = recorders({"F/x"});
    const std::vector<std::string> labels = {"row", "day", "x\r"};
    std::vector<IndependentVariable> day(1);
    day[0].setName("day");
    const auto notes = headerNotes(labels, matchResponseVariables(ports, labels, 1, "t"), {day, ports, {}});
    EXPECT_THAT(notes, ElementsAre(HasSubstr("no recorded port of the model: “x\\r”"), HasSubstr("carriage return")));

    const test::TemporaryFolder folder;
    for (const std::string& bytes : {std::string("\xFF\xFEr\0o\0w\0", 8), std::string("\x1F\x8B\x08\0zip", 7)}) {
        const std::string path = folder.write("table.txt", bytes);
        try {
            (void)constructDependentVariables({}, day, path);
            FAIL() << "not refused";
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.problem(), HasSubstr("UTF-16 or binary"));
            EXPECT_EQ(error.place().file, path);
        }
    }
}

} // namespace
} // namespace orrery
