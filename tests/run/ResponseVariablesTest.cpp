#include "run/ResponseVariables.h"

#include "platform/OrreryError.h"
#include "run/HeaderNotes.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>

namespace orrery {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;

/// Builds nodes by hand, as a model file would give them.
class Nodes {
public:
    ModelNode& add(ModelNode* parent, ModelNodeKind kind, const char* name, const char* recordp = nullptr) {
        ModelNode& node = m_nodes.emplace_back();
        node.kind = kind;
        node.record = {{"name", name}, {"id", std::string("id-") + name}};
        if (recordp != nullptr) {
            node.record.set("recordp", recordp);
        }
        node.parent = parent;
        if (parent != nullptr) {
            parent->children.push_back(&node);
        }
        return node;
    }

private:
    std::deque<ModelNode> m_nodes;
};

TEST(Recorders, AreTheRecordedOutputPortsInTreeOrder) {
    Nodes nodes;
    ModelNode& field = nodes.add(nullptr, ModelNodeKind::Level, "Field");
    ModelNode& misleading = nodes.add(&field, ModelNodeKind::Part, "outputs"); // a part by kind, whatever its name
    ModelNode& inner = nodes.add(&misleading, ModelNodeKind::PortGroup, "outputs");
    nodes.add(&inner, ModelNodeKind::Port, "yield", "1");
    ModelNode& inputs = nodes.add(&field, ModelNodeKind::PortGroup, "inputs");
    nodes.add(&inputs, ModelNodeKind::Port, "rain", "1");
    ModelNode& outputs = nodes.add(&field, ModelNodeKind::PortGroup, "outputs");
    nodes.add(&outputs, ModelNodeKind::Port, "quiet", "no");
    nodes.add(&outputs, ModelNodeKind::Port, "unset");
    nodes.add(&outputs, ModelNodeKind::Port, "runoff", "True");

    std::vector<ResponseVariable> recorders;
    collectRecorders(field, recorders);
    ASSERT_EQ(recorders.size(), 2U);
    EXPECT_EQ(recorders[0].name(), "Field/outputs/yield"); // "/outputs/outputs/": one of the two is the part
    EXPECT_EQ(recorders[1].name(), "Field/runoff");
    EXPECT_EQ(recorders[1].identifier(), "id-runoff");
    EXPECT_FALSE(recorders[1].includep());
    EXPECT_EQ(recorders[1].scale(), 1.0F);
}

TEST(BooleanValue, ReadsLeniently) {
    for (const char* yes : {"1", "yes", "True", "t", "Y", " \t+007", "-1", "00y", "9x"}) {
        EXPECT_TRUE(booleanValue(yes)) << yes;
    }
    for (const char* no : {"", "0", "no", "false", "000", "on", "--1", "+ 1", ".5"}) {
        EXPECT_FALSE(booleanValue(no)) << no;
    }
}

TEST(HeaderLabels, AreSplitAtTabsWithoutTheLastCharacter) {
    EXPECT_THAT(headerLabels("a\tb\t\tc\nrest"), ElementsAre("a", "b", "", "c"));
    EXPECT_THAT(headerLabels("a\tb\r\n"), ElementsAre("a", "b\r"));
    EXPECT_THAT(headerLabels("a\tbc"), ElementsAre("a", "b")); // cut: what stands last counts as the line feed
    EXPECT_THAT(headerLabels("\n"), ElementsAre(""));
    EXPECT_THAT(headerLabels("\x8e\n"), ElementsAre("\xc3\xa9")); // Mac OS Roman é
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

std::vector<std::string> namesOf(const ResponseVariables& responses) {
    std::vector<std::string> names;
    for (const ResponseVariable& variable : responses.variables) {
        names.push_back(variable.name());
    }
    return names;
}

TEST(ResponseVariables, FollowTheHeaderAndSpreadOverTheHueCircle) {
    auto result = matchResponseVariables(recorders({"F/A/x", "F/A/y", "F/B/x", "z"}),
                                         {"n", "a", "day", "z", "x", "x", "other"}, 2, "t.txt");
    EXPECT_THAT(result.labels, ElementsAre("z", "x", "x", "other"));
    EXPECT_THAT(namesOf(result), ElementsAre("z", "F/B/x", "F/B/x")); // the later x stands for both
    const auto near = [](float red, float green, float blue) {
        return AllOf(Field("red", &Color::red, FloatNear(red, 1e-6F)),
                     Field("green", &Color::green, FloatNear(green, 1e-6F)),
                     Field("blue", &Color::blue, FloatNear(blue, 1e-6F)));
    };
    EXPECT_THAT(result.variables[0].color(), near(1, 0, 0));
    EXPECT_THAT(result.variables[1].color(), near(0, 0, 1)); // one record in two columns, coloured last as the third
    result.variables[1].setValue("includep", true);
    EXPECT_TRUE(result.variables[2].includep());
    EXPECT_FALSE(result.variables[0].includep());
    const auto three = matchResponseVariables(recorders({"x", "y", "z"}), {"n", "day", "z", "y", "x"}, 1, "t.txt");
    EXPECT_THAT(three.variables[1].color(), near(0, 1, 0));
}

TEST(ResponseVariables, NeedALabelForEveryRecorder) {
    const auto two = recorders({"F/x", "F/y"});
    EXPECT_THAT(namesOf(matchResponseVariables(two, {"n", "day", "y", "x"}, 1, "t")), ElementsAre("F/y", "F/x"));
    EXPECT_THAT(namesOf(matchResponseVariables(two, {}, 1, "t")), IsEmpty());
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
        HeaderCase{"otherStepper", {"F/x"}, {"row", "seed", "day", "x"}, {"variables seed, day", "are rain, day"}},
        HeaderCase{"otherOrder", {"F/x"}, {"row", "day", "rain", "x"}, {"variables day, rain"}},
        HeaderCase{"shiftedColumn",
                   {"F/x", "F/yield"},
                   {"row", "rain", "day", "biomass", "yield"},
                   {"recorded port of the model: biomass.", "by position: yield may show biomass's numbers"}},
        HeaderCase{"unknownLast", {"F/x", "F/y"}, {"row", "rain", "day", "x", "z"}, {"model: z. Columns"}},
        HeaderCase{"moreLabels", {"F/x"}, {"row", "rain", "day", "x", "z"}, {"has 5 labels", "have 4", "from z on"}},
        HeaderCase{"portsOfOneName",
                   {"F/A/x", "F/B/x"},
                   {"row", "rain", "day", "x", "x"},
                   {"2 recorded ports are named x: F/A/x, F/B/x", "under F/B/x"}},
        HeaderCase{"labelTwice", {"F/x", "F/y", "F/z"}, {"row", "rain", "day", "x", "x", "y"}, {"label x 2 times"}}),
    [](const auto& row) { return row.param.name; });

TEST(Header, OfCarriageReturnOrNoTextIsToldApart) {
    const auto ports = recorders({"F/x"});
    const std::vector<std::string> labels = {"row", "day", "x\r"};
    std::vector<IndependentVariable> day(1);
    day[0].setName("day");
    const auto notes = headerNotes(labels, matchResponseVariables(ports, labels, 1, "t"), {day, ports, {}});
    EXPECT_THAT(notes, ElementsAre(HasSubstr("no recorded port of the model: x"), HasSubstr("carriage return")));

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
