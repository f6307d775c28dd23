#include "model/PortPaths.h"

#include "ModelBuilding.h"

#include <gtest/gtest.h>

namespace orrery {
namespace {

/// A field with two crops of one name, a part whose name holds a slash, one that nobody lists, and one named "inputs".
ModelTree fieldModel() {
    return nodesFromDictionaries(
        records({{"KSLEVEL", "r", {{"name", "Field"}}, {{"children", "l c1 c2 i"}, {"inputs", "ri"}}},
                 {"KSLEVEL", "l", {{"name", "Soil"}}, {{"parent", "r"}, {"children", "s"}}},
                 {"KSHTL", "s", {{"name", "Top/Layer"}}, {{"outputs", "so"}}},
                 {"KSHTL", "c1", {{"name", "Crop"}}, {{"outputs", "o1"}, {"parent", "r"}}},
                 {"KSHTL", "c2", {{"name", "Crop"}}, {{"outputs", "o2"}, {"inputs", "i2"}, {"parent", "r"}}},
                 {"KSHTL", "i", {{"name", "inputs"}}, {{"outputs", "io"}, {"parent", "r"}}},
                 {"KSHTL", "u", {{"name", "Unlisted"}}, {{"outputs", "uo"}, {"parent", "r"}}},
                 {"KSINPUT", "ri", {{"name", "rain"}}},
                 {"KSINPUT", "i2", {{"name", "biomass"}}},
                 {"KSOUTPUT", "o1", {{"name", "yield"}}},
                 {"KSOUTPUT", "o2", {{"name", "biomass"}}},
                 {"KSOUTPUT", "io", {{"name", "a/b"}}},
                 {"KSOUTPUT", "so", {{"name", "water"}}},
                 {"KSOUTPUT", "uo", {{"name", "x"}}}}),
        "m.xml");
}

struct PathCase {
    const char* name;
    const char* path;
    PortDirection direction;
    const char* identifier; // nullptr: no such port
};
class PortPath : public testing::TestWithParam<PathCase> {};

TEST_P(PortPath, NamesItsPort) {
    const ModelTree tree = fieldModel();
    const ModelNode* port = findPort(tree, GetParam().path, GetParam().direction);
    ASSERT_EQ(port != nullptr, GetParam().identifier != nullptr);
    if (port == nullptr) return;
    EXPECT_EQ(port->record.text("id"), GetParam().identifier);
    const PortReference reference = portReference(*port).value();
    EXPECT_EQ(reference.direction, GetParam().direction);
    EXPECT_TRUE(reference.path.ends_with(GetParam().path)) << reference.path; // old setups leave the front out
}

constexpr PortDirection in = PortDirection::Input;
constexpr PortDirection out = PortDirection::Output;
INSTANTIATE_TEST_SUITE_P(Paths, PortPath,
                         testing::Values(PathCase{"ofTheRoot", "/Field/rain", in, "ri"},
                                         PathCase{"otherDirection", "/Field/rain", out, nullptr},
                                         PathCase{"firstOfTwoParts", "/Field/Crop/yield", out, "o1"},
                                         PathCase{"secondOfTwoParts", "/Field/Crop/biomass", out, "o2"},
                                         PathCase{"inputOfTheSameName", "/Field/Crop/biomass", in, "i2"},
                                         PathCase{"slashInAPart", "/Field/Soil/Top/Layer/water", out, "so"},
                                         PathCase{"partNamedLikeAGroup", "/Field/inputs/a/b", out, "io"},
                                         PathCase{"shownButUnlisted", "/Unlisted/x", out, "uo"},
                                         PathCase{"partAndPort", "Crop/biomass", out, "o2"},
                                         PathCase{"partAndPortDeep", "Top/Layer/water", out, "so"},
                                         PathCase{"cutShort", "/Field/Crop", out, nullptr},
                                         PathCase{"groupIsNoPart", "/Field/Crop/outputs/biomass", out, nullptr},
                                         PathCase{"empty", "", out, nullptr}, PathCase{"slash", "/", in, nullptr}),
                         [](const auto& row) { return row.param.name; });

TEST(PortReference, IsForPortsInGroupsOnly) {
    const ModelTree tree = fieldModel();
    EXPECT_FALSE(portReference(*tree.root()));
    EXPECT_FALSE(portReference(*tree.root()->children.back())); // a group
    EXPECT_FALSE(portReference(*tree.topLevel().front()));
    EXPECT_EQ(pathForNode(*tree.topLevel().front()), "Field/Soil");
}

TEST(NearestPortPath, FitsTheNameFirstThenThePath) {
    const ModelTree tree = fieldModel();
    EXPECT_EQ(nearestPortPath(tree, "/Field/Crop/biomas", out), "/Field/Crop/biomass");
    EXPECT_EQ(nearestPortPath(tree, "/Filed/Crop/yeild", out), "/Field/Crop/yield");
    EXPECT_EQ(nearestPortPath(tree, "/Elsewhere/water", out), "/Field/Soil/Top/Layer/water");
    EXPECT_EQ(nearestPortPath(tree, "biomass", in), "/Field/Crop/biomass");
    EXPECT_EQ(nearestPortPath(tree, "/Field/Crop/temperature", out), "");
    EXPECT_EQ(nearestPortPath(tree, std::string(100'000, 'x'), out), "");
    EXPECT_EQ(nearestPortPath(ModelTree(), "/a/b", out), "");
}

} // namespace
} // namespace orrery
