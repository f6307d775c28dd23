#include "document/setup/SetupMove.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace orrery {
namespace {

TEST(ModelPathAfterMove, NamesTheSameModelFile) {
    const test::TemporaryFolder folder;
    const std::string& root = folder.path();
    std::filesystem::create_directories(root + "real/inner");
    std::filesystem::create_directories(root + "other");
    std::filesystem::create_directory_symlink("real/inner", root + "link");
    folder.write("real/crop.xml", "");
    const std::string here = std::filesystem::current_path().string() + "/";
    const std::string present = std::filesystem::directory_iterator(".")->path().filename().string();
    struct Case {
        const char* name;
        std::string model;
        std::optional<std::string> from;
        std::string to;
        std::string expected;
    };
    const std::vector<Case> cases = {
        {"in place", "m.xml", root + "real/a", root + "real/a", "m.xml"},
        {"beside", "./m.xml", root + "real/a", root + "real/b", "./m.xml"},
        {"same folder by a link", "../crop.xml", root + "link/a", root + "real/inner/b", "../crop.xml"},
        {"elsewhere", "m.xml", root + "real/a", root + "other/a", root + "real/m.xml"},
        {"absolute", "/m.xml", root + "real/a", root + "other/a", "/m.xml"},
        {"none", "", root + "real/a", root + "other/a", ""},
        {"up from a link", "../crop.xml", root + "link/a", root + "other/a", root + "real/crop.xml"},
        {"old folder gone", "m.xml", root + "gone/a", root + "other/a", root + "gone/m.xml"},
        {"untitled, present", present, std::nullopt, root + "other/a", here + present},
        {"untitled, missing", "no such.xml", std::nullopt, root + "other/a", "no such.xml"},
    };
    for (const Case& row : cases) {
        EXPECT_EQ(modelPathAfterMove(row.model, row.from, row.to), row.expected) << row.name;
    }
}

} // namespace
} // namespace orrery
