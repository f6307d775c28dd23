#include "document/setup/ModelPath.h"
#include "document/setup/SetupReader.h"
#include "engine/EngineFixture.h"
#include "model/ModelTree.h"
#include "run/ResponseVariables.h"
#include "run/SweepVariables.h"
#include "run/table/ResultTable.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace orrery::engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Starts the program on copies of the samples, with the test's directory as temporary directory.
class Zephyr : public EngineFixture {
protected:
    Zephyr() { std::filesystem::copy(ORRERY_SAMPLES, path("samples"), std::filesystem::copy_options::recursive); }

    struct Ended {
        int status = -1;
        std::string text; // both streams
    };
    [[nodiscard]] Ended shell(const std::string& script) const {
        const std::string environment =
            "export TMPDIR='" + m_folder.path() + "' Z='" ORRERY_BIN "/Zephyr'\ncd \"$TMPDIR\"\n";
        write("script.sh", environment + script);
        std::FILE* const pipe = popen(("sh '" + path("script.sh") + "' 2>&1").c_str(), "r");
        Ended ended;
        for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe)) {
            ended.text += static_cast<char>(byte);
        }
        ended.status = WEXITSTATUS(pclose(pipe));
        std::filesystem::remove(path("script.sh"));
        return ended;
    }
    void runAndReadSample(const std::string& name, std::uint32_t rows) const;
    /// The crop's sweep with so many steps that it runs for long.
    void writeLongRun() const {
        std::string setup = readWholeFile(path("samples/crop-two-steppers.orrery"));
        setup.replace(setup.find("<StepsPerDay>2<"), 15, "<StepsPerDay>2000<");
        write("samples/long.orrery", setup);
    }
};

void Zephyr::runAndReadSample(const std::string& name, std::uint32_t rows) const {
    const std::string setupPath = path("samples/" + name + ".orrery");
    const Ended ended = shell("exec \"$Z\" '" + setupPath + "'");
    ASSERT_EQ(ended.status, 0) << ended.text;

    const LoadedSetup setup = readSetup(readWholeFile(setupPath), setupPath);
    ASSERT_TRUE(setup.parsed);
    const ModelTree model = readModelTree(resolvedPath(setup.dictionary.textOrEmpty(setup_key::modelPath), setupPath));
    const SweepGrid grid = constructIndependentVariables(setup.dictionary, currentCalendar());
    EXPECT_EQ(grid.nRowsOfData, rows);
    const ResponseVariables responses = constructDependentVariables(model, grid.variables, path("Zephyr.txt"));
    ASSERT_EQ(responses.variables.size(), recordersOf(model).size());

    const TableShape shape{grid.nRowsOfData, grid.variables.size() + 1, responses.variables.size()};
    const ResultTable table = readResultTable(path("Zephyr.txt"), shape);
    EXPECT_THAT(table.notes(shape), ElementsAre());
    const std::string bytes = read("Zephyr.txt");
    EXPECT_EQ(std::ranges::count(bytes, '\n'), std::int64_t{grid.nRowsOfData} + 1);
    for (std::size_t column = 0; column < shape.columns; ++column) {
        EXPECT_GT(table.maxima[column], 0) << responses.variables[column].name();
    }
}

TEST_F(Zephyr, RunsEverySampleAndFillsItsGrid) {
    for (const auto& [name, rows] :
         std::initializer_list<std::pair<const char*, std::uint32_t>>{{"crop-single", 100},
                                                                      {"crop-one-stepper", 1300},
                                                                      {"crop-two-steppers", 100000},
                                                                      {"predator-prey-single", 240},
                                                                      {"predator-prey-one-stepper", 4560},
                                                                      {"predator-prey-two-steppers", 45600},
                                                                      {"insect-single", 105},
                                                                      {"insect-one-stepper", 1785},
                                                                      {"insect-two-steppers", 19845},
                                                                      {"insect-blocks", 105}}) {
        SCOPED_TRACE(name);
        runAndReadSample(name, rows);
        EXPECT_TRUE(std::filesystem::remove(path("Zephyr.txt")));
    }
    const std::string larvae = read("samples/insect-larvae.txt");
    EXPECT_EQ(std::ranges::count(larvae, '\n'), 105);
    EXPECT_EQ(std::ranges::count(larvae, ' '), 105 * 11); // 12 cells
}

TEST_F(Zephyr, SaysThatItIsASampleAndWhatItWants) {
    const Ended help = shell("exec \"$Z\" --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.text, HasSubstr("This engine is a sample"));
    for (const char* arguments : {"", "a b"}) {
        const Ended wrong = shell(std::string("exec \"$Z\" ") + arguments);
        EXPECT_EQ(wrong.status, 1);
        EXPECT_THAT(wrong.text, HasSubstr("expected one argument"));
    }
    const Ended missing = shell("exec \"$Z\" gone.orrery");
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.text, HasSubstr("gone.orrery"));
}

TEST_F(Zephyr, EndsAtOnceOnTerminationAndLeavesNothing) {
    writeLongRun();
    const Ended ended = shell("\"$Z\" samples/long.orrery > said & pid=$!\n"
                              "until grep -q '%' said; do kill -0 $pid || exit 9; sleep 0.02; done\n"
                              "kill -TERM $pid; wait $pid; status=$?; rm said; exit $status");
    EXPECT_EQ(ended.status, 143);
    EXPECT_THAT(files(), ElementsAre("samples"));
}

TEST_F(Zephyr, KeepsTheOldTableWhenTheNewOneCannotBeWritten) {
    write("Zephyr.txt", "old");
    const Ended ended = shell("trap '' XFSZ; ulimit -f 64; exec \"$Z\" samples/crop-two-steppers.orrery");
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.text, HasSubstr(path("Zephyr.txt") + ": The file was not saved: it cannot be written: "));
    EXPECT_EQ(read("Zephyr.txt"), "old");
    EXPECT_THAT(files(), ElementsAre("Zephyr.txt", "samples"));
}

} // namespace
} // namespace orrery::engine
