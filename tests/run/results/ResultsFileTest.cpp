// What is kept of a run comes back bit for bit; a file that is not a whole one of ours is refused in words.
#include "run/results/ResultsFile.h"

#include "model/ModelBuilding.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "plot/data/PlotRows.h"
#include "run/IndexSet.h"
#include "run/ResultsMark.h"
#include "support/TemporaryFolder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netcdf.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>

namespace orrery {
namespace {

using testing::HasSubstr;

/// Steppers of those counts and "day" last.
SweepGrid gridOf(const std::vector<std::uint32_t>& counts, const std::vector<std::string>& names) {
    SweepGrid grid;
    std::uint32_t stride = 1;
    for (std::size_t i = counts.size(); i-- > 0;) {
        IndependentVariable variable;
        variable.setName(names[i]);
        variable.setStart(0.1F);
        variable.setStep(0.1F);
        variable.setStop(7);
        variable.setConstant(0.35F);
        variable.setStride(stride);
        variable.setStridesPerCycle(counts[i]);
        stride *= counts[i];
        grid.variables.insert(grid.variables.begin(), variable);
    }
    grid.nRowsOfData = stride;
    return grid;
}

float cellAt(std::size_t cell) {
    return std::sin(static_cast<float>(cell)) * 1e3F;
}

class ResultsFileTest : public testing::Test {
protected:
    ResultsFileTest() {
        // More rows than are written at a time, which end within every variable.
        results.grid = gridOf({7, 311, 97}, {"/Field/Soil/water", "/Field/Crop/day", "day"});
        const ResponseVariable twice("Field/Crop/biomass", "z1");
        results.responses = {.labels = {"biomass", "strange", "biomass", "höhe"},
                             .variables = {twice, ResponseVariable("Field/Wald/höhe", "z2"), twice},
                             .notes = {},
                             .units = {"g/m2", "", "g/m2"}};
        spreadColors(results.responses.variables);
        results.table.cells = CellBlock(std::size_t{results.grid.nRowsOfData} * 3);
        for (std::size_t i = 0; i < results.table.cells.size(); ++i) {
            results.table.cells.data()[i] = cellAt(i);
        }
        results.table.cells.data()[4] = -0.0F;
        results.table.cells.data()[5] = std::numeric_limits<float>::infinity();
        results.table.rowsFound = 100000;
        results.notes = {"12 of 100 rows are missing.", "A second “note”."};
        record.setup = {.path = "/home/a b/x.orrery", .sha256 = std::string(64, 'a'), .size = 3, .bytes = "<a>"};
        record.model = {.path = "/home/model.xml", .sha256 = "", .size = 0, .bytes = {}};
        record.enginePath = "/usr/bin/Zephyr";
        record.engineText = std::string("day 1\nday 2\0\xF0\x9F\x8C\xB1", 16);
        record.started = "2026-11-26 09:30:00 +0000";
    }
    [[nodiscard]] std::string path() const { return folder.path() + "kept.nc"; }
    std::string refusal() const {
        try {
            (void)openResultsFile(path());
        } catch (const OrreryError& error) {
            return error.what();
        }
        return "";
    }

    test::TemporaryFolder folder;
    RunResults results;
    RunRecord record;
};

TEST_F(ResultsFileTest, GivesTheRunBackBitForBit) {
    writeResultsFile(path(), results, record);
    EXPECT_TRUE(looksLikeResultsFile(path()));
    const KeptRun kept = openResultsFile(path());
    ASSERT_EQ(kept.results.grid.variables.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        const IndependentVariable& read = kept.results.grid.variables[i];
        const IndependentVariable& written = results.grid.variables[i];
        EXPECT_EQ(read.name(), written.name());
        EXPECT_EQ(std::tuple(read.start(), read.step(), read.stop(), read.constant()),
                  std::tuple(written.start(), written.step(), written.stop(), written.constant()));
        EXPECT_EQ(std::pair(read.stride(), read.stridesPerCycle()),
                  std::pair(written.stride(), written.stridesPerCycle()));
    }
    EXPECT_TRUE(kept.results.table.cells.empty()) << "they stay in the file";
    std::size_t same = 0;
    forEachRows(kept.results, [&](std::uint32_t first, std::span<const float> cells) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            same += static_cast<std::size_t>(
                std::bit_cast<std::uint32_t>(cells[i]) ==
                std::bit_cast<std::uint32_t>(results.table.cells[(std::size_t{first} * 3) + i]));
        }
    });
    EXPECT_EQ(same, results.table.cells.size());
    EXPECT_EQ(kept.results.table.rowsFound, 100000U);
    EXPECT_EQ(kept.results.notes, results.notes);
    EXPECT_EQ(kept.results.responses.labels, results.responses.labels);
    EXPECT_EQ(kept.results.responses.units, results.responses.units);
    std::vector<ResponseVariable> read = kept.results.responses.variables;
    ASSERT_EQ(read.size(), 3U);
    EXPECT_EQ(read[1].name(), "Field/Wald/höhe");
    EXPECT_EQ(read[1].color(), results.responses.variables[1].color());
    read[0].setValue("includep", true);
    EXPECT_TRUE(read[2].includep()) << "two columns of one port are one record";
    EXPECT_EQ(kept.record.setup.bytes, record.setup.bytes);
    EXPECT_EQ(kept.record.setup.sha256, record.setup.sha256);
    EXPECT_EQ(kept.record.model.path, record.model.path);
    EXPECT_FALSE(kept.record.model.bytes);
    EXPECT_EQ(kept.record.engineText, record.engineText);
    EXPECT_EQ(kept.record.enginePath, record.enginePath);
    EXPECT_EQ(kept.record.started, record.started);
}

/// The bits of a plot of what is chosen of the results, or of those rows.
std::vector<std::uint32_t> plotBits(const RunResults& of, std::optional<std::vector<std::uint32_t>> indices = {}) {
    const PlotLayout layout = plotLayout(of.grid.variables, of.responses.variables);
    const PlotRows rows(of, indices ? *indices : currentIndexSet(of.grid.variables));
    const auto make = layout.dimensions == 2 ? make2DVertexData : make3DVertexData;
    std::vector<std::uint32_t> bits;
    std::ranges::transform(make(layout, rows.source(of)), std::back_inserter(bits),
                           [](float value) { return std::bit_cast<std::uint32_t>(value); });
    return bits;
}

TEST_F(ResultsFileTest, APlotFromTheFileIsThatOfTheTable) {
    for (std::size_t cell = 1; cell < results.table.cells.size(); cell += 3) { // one response without a positive value
        float& value = results.table.cells.data()[cell];
        value = -std::fabs(value);
    }
    results.table.cells.data()[7] = -std::numeric_limits<float>::infinity();
    writeResultsFile(path(), results, record);
    RunResults kept = openResultsFile(path()).results;
    using Roles = std::vector<PlotRole>;
    constexpr auto held = PlotRole::Held;
    constexpr auto one = PlotRole::Axis1;
    constexpr auto two = PlotRole::Axis2;
    for (const std::size_t response : {0U, 1U}) {
        for (RunResults* each : {&results, &kept}) {
            each->responses.variables[0].setValue("includep", response == 0);
            each->responses.variables[1].setValue("includep", true);
        }
        for (const Roles& roles : {Roles{held, held, one}, Roles{held, one, held}, Roles{one, held, held},
                                   Roles{held, one, two}, Roles{two, held, one}, Roles{one, two, held}}) {
            for (RunResults* each : {&results, &kept}) {
                for (std::size_t i = 0; i < roles.size(); ++i) {
                    each->grid.variables[i].setFunction(roles[i]);
                }
            }
            EXPECT_TRUE(plotBits(results) == plotBits(kept)) << testing::PrintToString(roles);
        }
        const std::vector<std::uint32_t> some{0, 1, 2, 96, 97, 99, 31000, 31001, 211168};
        EXPECT_TRUE(plotBits(results, some) == plotBits(kept, some));
    }
}

TEST_F(ResultsFileTest, ATableIsTurnedIntoTheSameFileWithoutBeingHeld) {
    const ModelTree model = nodesFromDictionaries(
        records({{"KSLEVEL", "r", {{"name", "Field"}}, {{"children", "p"}}},
                 {"KSEXPRESSION", "p", {{"name", "Crop"}}, {{"parent", "r"}, {"outputs", "a b"}}},
                 {"KSOUTPUT", "a", {{"name", "biomass"}, {"varid", "1"}, {"recordp", "1"}, {"unit", "g/m2"}}},
                 {"KSOUTPUT", "b", {{"name", "grain"}, {"varid", "2"}, {"recordp", "1"}}}}));
    std::string text = "row\twater\tday\tday\tbiomass\tgrain\n"; // rows are missing
    for (std::size_t row = 0; row < 100000; ++row) {
        text += fmt::format("1 2 3 4\t{}\t{}\n", cellAt(row), cellAt(2 * row));
    }
    const std::string table = folder.write("Zephyr.txt", text);
    const RunResults whole = readRunResults(results.grid, model, table);
    EXPECT_EQ(keepTable(path(), results.grid, model, table, record).notes, whole.notes);
    const std::string streamed = readWholeFile(path());
    writeResultsFile(path(), whole, record);
    EXPECT_TRUE(readWholeFile(path()) == streamed);
    const KeptRun kept = openResultsFile(path());
    EXPECT_EQ(kept.results.table.rowsFound, 100000U);
    EXPECT_EQ(kept.results.table.maxima, whole.table.maxima);
    EXPECT_EQ(kept.results.responses.units, (std::vector<std::string>{"g/m2", ""}));
}

TEST_F(ResultsFileTest, NamesWhatOtherProgramsSee) {
    writeResultsFile(path(), results, record);
    int file = 0;
    ASSERT_EQ(nc_open(path().c_str(), NC_NOWRITE, &file), NC_NOERR);
    for (const auto& [name, length] : {std::pair("water", 7U), {"day_2", 311U}, {"day", 97U}}) {
        int dimension = 0;
        std::size_t found = 0;
        ASSERT_EQ(nc_inq_dimid(file, name, &dimension), NC_NOERR) << name;
        nc_inq_dimlen(file, dimension, &found);
        EXPECT_EQ(found, length) << name;
    }
    for (const char* name : {"biomass", "höhe", "biomass_2"}) {
        int variable = 0;
        EXPECT_EQ(nc_inq_varid(file, name, &variable), NC_NOERR) << name;
    }
    int water = 0;
    nc_inq_varid(file, "water", &water);
    std::vector<float> values(7);
    ASSERT_EQ(nc_get_var_float(file, water, values.data()), NC_NOERR);
    for (std::uint32_t i = 0; i < 7; ++i) {
        EXPECT_EQ(values[i], valueAtIndex(results.grid.variables[0], i));
    }
    nc_close(file);
}

TEST_F(ResultsFileTest, RefusesInWordsWhatIsNotAWholeOneOfOurs) {
    writeResultsFile(path(), results, record);
    const std::string whole = readWholeFile(path());
    for (const std::size_t length : {std::size_t{0}, std::size_t{3}}) {
        folder.write("kept.nc", whole.substr(0, length));
        EXPECT_THAT(refusal(), HasSubstr("This is not a results file.")) << length;
    }
    for (const std::size_t length : {std::size_t{40}, std::size_t{5000}, whole.size() / 2, whole.size() - 1}) {
        folder.write("kept.nc", whole.substr(0, length));
        EXPECT_THAT(refusal(), HasSubstr("kept.nc: The results file is cut or damaged: ")) << length;
    }
    folder.write("kept.nc", "day\tbiomass\n1\t2\n");
    EXPECT_THAT(refusal(), HasSubstr("This is not a results file."));
    int file = 0;
    ASSERT_EQ(nc_create(path().c_str(), NC_NETCDF4 | NC_CLOBBER, &file), NC_NOERR);
    nc_close(file);
    EXPECT_THAT(refusal(), HasSubstr("This NetCDF file does not hold the results of a run."));
    writeResultsFile(path(), results, record);
    ASSERT_EQ(nc_open(path().c_str(), NC_WRITE, &file), NC_NOERR);
    const long long later = 9;
    nc_put_att_longlong(file, NC_GLOBAL, "orrery_format", NC_INT64, 1, &later);
    nc_close(file);
    EXPECT_THAT(refusal(), HasSubstr("has format 9, and this version of Orrery reads up to 1."));
}

TEST_F(ResultsFileTest, RefusesToKeepNothingAndLeavesTheOldFile) {
    writeResultsFile(path(), results, record);
    const std::string before = readWholeFile(path());
    RunResults empty = std::move(results);
    empty.grid.nRowsOfData = 0;
    EXPECT_THROW(writeResultsFile(path(), empty, record), OrreryError);
    empty.grid.nRowsOfData = results.grid.nRowsOfData;
    EXPECT_THROW(writeResultsFile(folder.path() + "none/kept.nc", empty, record), OrreryError);
    EXPECT_EQ(readWholeFile(path()), before);
}

TEST_F(ResultsFileTest, HoldsAsManySweepVariablesAsTheFormatCan) {
    for (const std::size_t count : {std::size_t{32}, std::size_t{33}}) {
        RunResults many;
        many.grid = gridOf(std::vector<std::uint32_t>(count, 1), std::vector<std::string>(count, "/Field/x"));
        many.responses.variables = {ResponseVariable("Field/y", "z1")};
        many.table.cells = CellBlock(1);
        if (count > 32) {
            EXPECT_THROW(writeResultsFile(path(), many, record), OrreryError);
        } else {
            writeResultsFile(path(), many, record);
            EXPECT_EQ(openResultsFile(path()).results.grid.variables.size(), count);
        }
    }
}

TEST(RecordedFileTest, HoldsTheHashOfAllAndTheBytesOfWhatIsSmall) {
    const test::TemporaryFolder folder;
    folder.write("model.xml", "abc");
    const RecordedFile whole = recordFile(folder.path() + "model.xml");
    EXPECT_EQ(whole.sha256, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(whole.bytes, "abc");
    const RecordedFile large = recordFile(folder.path() + "model.xml", 2);
    EXPECT_EQ(large.sha256, whole.sha256);
    EXPECT_EQ(large.size, 3U);
    EXPECT_FALSE(large.bytes);
    EXPECT_EQ(recordFile(folder.path() + "none").sha256, "");
}

} // namespace
} // namespace orrery
