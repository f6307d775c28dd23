#include "run/Export.h"

#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

SetupDictionary spatialSetup(EntryList outputs) {
    SetupDictionary setup;
    setup.setText(setup_key::dimensions, "{ 10, 10 }");
    setup.setList(setup_key::outputs, std::move(outputs));
    return setup;
}

TEST(Export, SendsTheTableOfASingleRunAndTheOutputFilesOfASpatialOne) {
    const EntryList outputs = {{{"portPath", "/P/b"}, {"outputPath", "/r/b"}},
                               {{"portPath", "/P/a"}, {"outputPath", "r/a"}}};
    SetupDictionary setup = spatialSetup(outputs);
    EXPECT_THAT(exportPaths(setup, "/t/Zephyr.txt", "/s/a.orrery"), ElementsAre("/r/b", "/s/r/a"));
    for (const char* single : {"{ 1, 1 }", "{1,1}", "{1.0, 1e0}"}) {
        setup.setText(setup_key::dimensions, single);
        EXPECT_THAT(exportPaths(setup, "/t/Zephyr.txt", "/s/a.orrery"), ElementsAre("/t/Zephyr.txt")) << single;
    }
    setup = spatialSetup({{{"portPath", "/P/b"}, {"outputPath", "/r/b"}}, {{"portPath", "/P/a"}}});
    try {
        (void)exportPaths(setup, "/t/Zephyr.txt", "/s/a.orrery");
        ADD_FAILURE() << "not refused";
    } catch (const OrreryError& error) {
        EXPECT_THAT(error.problem(), HasSubstr("/P/a"));
    }
}

TEST(Export, IsPossibleOnlyWhenAllFilesAreThere) {
    const test::TemporaryFolder folder;
    const std::string there = folder.path() + "orrery_export_there";
    std::ofstream(there) << "1";
    const std::string setupPath = folder.path() + "a.orrery";
    const std::string missing = folder.path() + "orrery_export_missing";

    EXPECT_TRUE(exportFilesExist(spatialSetup({{{"outputPath", there}}, {{"outputPath", there}}}), missing, setupPath));
    EXPECT_FALSE(
        exportFilesExist(spatialSetup({{{"outputPath", there}}, {{"outputPath", missing}}}), there, setupPath));
    EXPECT_FALSE(exportFilesExist(spatialSetup({{{"outputPath", there}}, {{"portPath", "/P/a"}}}), there, setupPath));
    EXPECT_TRUE(exportFilesExist(spatialSetup({{{"outputPath", "orrery_export_there"}}}), missing, setupPath));
    EXPECT_FALSE(exportFilesExist(spatialSetup({}), there, setupPath));
    SetupDictionary single;
    single.setText(setup_key::dimensions, "{ 1, 1 }");
    EXPECT_TRUE(exportFilesExist(single, there, setupPath));
    EXPECT_FALSE(exportFilesExist(single, missing, setupPath));
}

} // namespace
} // namespace orrery
