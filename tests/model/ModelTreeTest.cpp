#include "model/ModelTree.h"

#include "ModelBuilding.h"
#include "platform/Log.h"
#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace orrery {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// "Field[Crop[<rain >biomass]]": a node's name, then its children; "<" stands before inputs, ">" before outputs.
/// For shallow trees.
std::string outline(const ModelNode& node) {
    std::string children;
    for (const ModelNode* child : node.children) {
        EXPECT_EQ(child->parent, &node);
        if (child->kind == ModelNodeKind::PortGroup) {
            for (const ModelNode* port : child->children) {
                children += (children.empty() ? "" : " ") + std::string(child->name() == "inputs" ? "<" : ">");
                children += outline(*port);
            }
        } else {
            children += (children.empty() ? "" : " ") + outline(*child);
        }
    }
    return std::string(node.name()) + (children.empty() ? "" : "[" + children + "]");
}

std::string outline(const ModelTree& tree) {
    std::string text = outline(*tree.root()) + " shown:";
    for (const ModelNode* node : tree.topLevel()) {
        text += " " + std::string(node->name());
    }
    return text;
}

const ObjectText rootLevel = {"KSLEVEL", "r", {{"name", "R"}}, {{"children", "a b"}}};
const std::pair<std::string, std::string> inRoot = {"parent", "r"};

// The comparison with the reference implementation has many models; these are what it does not have.
TEST(ModelTree, FollowsTheRelationships) {
    struct Case {
        const char* name;
        std::vector<ObjectText> objects;
        const char* outline;
    };
    const Case cases[] = {
        {"last owner wins",
         {{"KSLEVEL", "r", {{"name", "R"}}, {{"children", "a b a"}, {"inputs", "p"}, {"outputs", "p"}}},
          {"KSRANDOM", "a", {{"name", "A"}}, {{"inputs", "p q"}, inRoot}},
          {"KSFILE", "b", {{"name", "B"}}, {{"inputs", "q"}}},
          {"KSINPUT", "p", {{"name", "p"}}},
          {"KSINPUT", "q", {{"name", "q"}}}},
         "R[B[<q] A[<p]] shown: A"},
        {"last parentless level is the root",
         {{"KSLEVEL", "o", {{"name", "O"}}, {{"children", "a"}}},
          {"KSLEVEL", "r", {{"name", "R"}}},
          {"KSWEATHER", "w"},
          {"KSLOOKUP", "a", {{"name", "A"}}, {inRoot}}},
         "R shown: A"},
        {"only levels have children",
         {{"KSLEVEL", "r", {{"name", "R"}}, {{"children", "a"}}},
          {"KSEXPRESSION", "a", {}, {{"children", "missing"}}},
          {"KSINPUT", "p", {}, {{"inputs", "missing"}, inRoot}}},
         "R[KSEXPRESSION] shown:"},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(outline(nodesFromDictionaries(records(row.objects), "m.xml")), row.outline) << row.name;
    }
}

TEST(ModelTree, RecordsHoldTextsOnlyAndStayValidWhenTheTreeIsMoved) {
    ModelTree tree = nodesFromDictionaries(
        records({{"KSLEVEL", "r", {{"recordp", "1"}, {"attributes", "x"}, {"relationships", "y"}}}}), "m.xml");
    const ModelNode* root = tree.root();
    const ModelTree moved = std::move(tree);
    EXPECT_EQ(moved.root(), root);
    EXPECT_TRUE(root->record == (StringMap{{"class", "KSLEVEL"}, {"id", "r"}, {"recordp", "1"}, {"name", "KSLEVEL"}}));
    EXPECT_TRUE(nodesFromDictionaries(std::optional<std::vector<ModelRecord>>(), "m.xml").empty());
}

struct FailureCase {
    std::vector<ObjectText> objects;
    std::size_t line;
    const char* beginning;
    const char* further = "";
};
constexpr const char* noChild = "Failure to find child node";
const FailureCase failureCases[] = {
    {{{"KSLevel", "z"}}, 1, "Couldn't find class for KSLevel", "“z”"},
    {{{"KSLEVEL", "r"}, {nullptr, "z"}}, 2, "Couldn't find class for ", "no type"},
    {{}, 0, "No root", "no model objects"},
    {{{"KSTEMPLATE", "t"}}, 0, "No root"},
    {{{"KSLEVEL", "r", {}, {{"parent", ""}}}}, 0, "No root"},
    {{{"KSRANDOM", "r"}}, 0, "No root"},
    {{{"KSLEVEL", "r"}, {"KSLEVEL", nullptr}}, 0, "No root", "no identifier"},
    {{rootLevel}, 1, noChild, "names “a” among its “children”"},
    {{{"KSTEMPLATE", "t"}, {"KSLEVEL", "r", {}, {{"children", "t"}}}}, 2, noChild, "template"},
    {{{"KSLEVEL", "r", {}, {{"inputs", ""}}}}, 1, noChild, "empty"},
    {{{"KSLEVEL", "r"}, {"KSHTL", "h", {}, {{"outputs", "x"}}}}, 2, noChild, "“x”"},
    {{rootLevel, {"NOVEL", "n"}}, 2, "Couldn't find class for NOVEL"}, // before root and child
    {{{"KSLEVEL", "r", {{"name", "R"}}, {{"children", "r"}}}}, 1, "The level “R”", "ancestor"},
    {{{"KSLEVEL", "r"}, {"KSHTL", "h", {{"name", "H"}}, {{"inputs", "h"}}}}, 2, "The part “H”", "ancestor"},
    {{{"KSLEVEL", "r"}, // a cycle beside the root
      {"KSLEVEL", "a", {{"name", "A"}}, {{"children", "b"}, {"parent", "b"}}},
      {"KSLEVEL", "b", {}, {{"children", "a"}, {"parent", "a"}}}},
     2,
     "The level “A”",
     "ancestor"},
};

TEST(BadModel, IsRefusedWithPlaceAndCulprit) {
    for (const FailureCase& row : failureCases) {
        SCOPED_TRACE(testing::Message() << row.objects.size() << " objects: " << row.beginning << row.further);
        try {
            (void)nodesFromDictionaries(records(row.objects), "m.xml");
            ADD_FAILURE() << "the model was accepted";
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.problem(), StartsWith(row.beginning));
            EXPECT_THAT(error.problem(), HasSubstr(row.further));
            EXPECT_EQ(error.place().file, "m.xml");
            EXPECT_EQ(error.place().line, row.line);
        }
    }
}

std::vector<ModelRecord> chainOfLevels(std::size_t count) {
    std::vector<ModelRecord> chain(count);
    for (std::size_t index = 0; index < count; ++index) {
        chain[index].className = "KSLEVEL";
        chain[index].identifier = std::to_string(index);
        if (index > 0) chain[index].relationships["parent"].targets = {std::to_string(index - 1)};
        if (index + 1 < count) chain[index].relationships["children"].targets = {std::to_string(index + 1)};
    }
    return chain;
}

TEST(ModelTree, BoundsItsDepth) {
    EXPECT_FALSE(nodesFromDictionaries(chainOfLevels(modelDepthLimit), "m.xml").empty());
    EXPECT_THROW((void)nodesFromDictionaries(chainOfLevels(modelDepthLimit + 1), "m.xml"), OrreryError);
    EXPECT_THROW((void)nodesFromDictionaries(chainOfLevels(20'000), "m.xml"), OrreryError);
}

TEST(ModelTree, TakesVeryManyAttributesAndSharedChildren) {
    constexpr std::size_t count = 300'000;
    std::vector<ModelRecord> model = records({{"KSLEVEL", "r"}, {"KSINPUT", "p"}});
    for (std::size_t index = 0; index < count; ++index) {
        model[0].attributes.push_back({{"name", std::to_string(index / 2)}, {"value", std::to_string(index)}});
    }
    model[0].relationships["inputs"].targets = std::vector<std::string>(count, "p");
    const ModelTree tree = nodesFromDictionaries(std::move(model), "m.xml");
    EXPECT_EQ(tree.root()->record.size(), count / 2 + 3);
    EXPECT_EQ(tree.root()->record.text("7"), "15");
    EXPECT_EQ(tree.root()->children[0]->children.size(), 1U);
}

TEST(ModelTree, LogsIdentifiersUsedTwiceWithoutFloodingTheLog) {
    std::vector<std::string> log;
    setLogSink([&log](std::string_view line) { log.emplace_back(line); });
    std::vector<ObjectText> objects(101, ObjectText{"KSLEVEL", "twice"});
    (void)nodesFromDictionaries(records(objects), "m.xml");
    setLogSink({});
    EXPECT_LT(log.size(), 20U);
    EXPECT_THAT(log.front(), StartsWith("m.xml:2: identifier “twice”"));
    EXPECT_THAT(log.back(), HasSubstr("90 more"));
}

// ---- Straight from the file

bool same(const ModelNode& left, const ModelNode& right) {
    return left.kind == right.kind && left.record == right.record &&
           std::ranges::equal(left.children, right.children,
                              [](const ModelNode* one, const ModelNode* other) { return same(*one, *other); });
}

TEST(ModelTreeFromFile, IsThatOfItsRecords) {
    for (const char* sample : {"crop.xml", "insect.xml", "predator-prey.xml"}) {
        const std::string path = std::string(ORRERY_SAMPLES "/") + sample;
        const ModelTree tree = readModelTree(path);
        const ModelTree expected = nodesFromDictionaries(readModelFile(path), path);
        EXPECT_TRUE(same(*tree.root(), *expected.root())) << sample;
        EXPECT_EQ(outline(tree), outline(expected));
    }
}

TEST(ModelTreeFromFile, TellsAFaultOfTheFileBeforeThoseOfItsObjects) {
    const test::TemporaryFolder folder;
    const std::string novel = R"(<database><object type="NOVEL" id="n"><attribute name="a">1</attribute></object>)";
    const auto problem = [](const auto& read) -> std::string {
        try {
            (void)read();
            return "none";
        } catch (const OrreryError& error) {
            return error.what();
        }
    };
    for (const auto& [text, expected] : {std::pair{novel + "</database>", "Couldn't find class for NOVEL"},
                                         {novel + "</databas>", "end tag"},
                                         {std::string("<database/>"), "No root"}}) {
        const std::string path = folder.write("model.xml", text);
        EXPECT_THAT(problem([&] { return readModelTree(path); }), HasSubstr(expected));
        EXPECT_EQ(problem([&] { return readModelTree(path); }),
                  problem([&] { return nodesFromDictionaries(readModelFile(path), path); }));
    }
    std::vector<std::string> log;
    setLogSink([&log](std::string_view line) { log.emplace_back(line); });
    EXPECT_TRUE(importModel(folder.path() + "none.xml").tree.empty());
    EXPECT_TRUE(importModel("").tree.empty());
    setLogSink({});
    EXPECT_THAT(log, testing::ElementsAre("Error opening XML document " + folder.path() + "none.xml", testing::_));
}

TEST(ModelTreeFromFile, TellsHowFarItIsAndCanBeCancelled) {
    const test::TemporaryFolder folder;
    const std::string filling(1U << 20U, ' ');
    const std::string path = folder.write("model.xml", "<database>" + filling + R"(<object type="KSLEVEL" id="r"/>)" +
                                                           filling + "</database>");
    std::vector<double> steps;
    const auto cancelAt = [&](double limit) {
        return [&steps, limit](double fractionDone) {
            steps.push_back(fractionDone);
            return fractionDone < limit;
        };
    };
    EXPECT_FALSE(readModelTree(path, cancelAt(2)).empty());
    EXPECT_GT(steps.size(), 4U);
    EXPECT_TRUE(std::ranges::is_sorted(steps));
    EXPECT_EQ(steps.back(), 1);
    steps.clear();
    EXPECT_THROW((void)importModel(path, cancelAt(0.5)), ReadingCancelled);
    EXPECT_LT(steps.back(), 0.6) << "nothing is read after that";
}

} // namespace
} // namespace orrery
