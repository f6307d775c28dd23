#include "run/table/ResultTable.h"

#include "platform/values/Numbers.h"
#include "run/table/RowScanner.h"
#include "run/table/TableKernels.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <thread>

namespace orrery {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace std::string_literals;

constexpr float inf = std::numeric_limits<float>::infinity();

// ---- What a table's text means: one leading field, two columns, two rows

struct TableCase {
    const char* name;
    std::string rows; // behind the header line
    std::vector<float> cells;
    std::uint32_t rowsFound = 2;
    std::uint64_t without = 0;
};

class TableText : public testing::TestWithParam<TableCase> {};

bool isFinite(float value) {
    return std::isfinite(value);
}

TEST_P(TableText, BecomesCells) {
    const TableCase& row = GetParam();
    const TableShape shape{2, 1, 2};
    const ResultTable table = parseResultTable("day\ta\tb\n" + row.rows, shape);
    EXPECT_THAT(table.cells, ElementsAreArray(row.cells));
    EXPECT_EQ(table.rowsFound, row.rowsFound);
    EXPECT_EQ(table.cellsWithoutNumber, row.without);
    EXPECT_EQ(table.notes(shape).empty(),
              row.rowsFound == 2 && row.without == 0 && std::ranges::all_of(row.cells, isFinite));
    for (std::size_t column = 0; column < 2; ++column) {
        EXPECT_EQ(table.maxima[column], std::max({row.cells[column], row.cells[2 + column], noMaximum}));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TableText,
    testing::Values(TableCase{"plain", "k\t1\t2\nk\t3\t4\n", {1, 2, 3, 4}},
                    TableCase{"commasAndBlanks", "k 1.5,2.5\nk , 3 ,\t,-4 ,\n", {1.5F, 2.5F, 3, -4}},
                    TableCase{"carriageReturns", "k\t1\t2\r\nk\t3\t4\r\n", {1, 2, 3, 4}},
                    TableCase{"groups", "k\t{1, 2, 3.5} 7\nk {-1\t+2}{.5,.5}\n", {6.5F, 7, 1, 1}},
                    TableCase{"groupAfterWords", "k a{b 1 2}3\nk {1 x 2}\t3\n", {3, 3, 1, 2}},
                    TableCase{"unclosedGroup", "k\t{1\t2\nk\t3\t4\n", {3, 0, 3, 4}, 2, 1},
                    TableCase{"emptyGroup", "k\t{}\t2\nk\t3\t{}\n", {2, 0, 3, 0}, 2, 2},
                    TableCase{"wordsShift", "k\tnan\t2\nk\tinf 3\t-inf\n", {2, 0, 3, 0}, 2, 2},
                    TableCase{"loneMinusStaysThere", "k\t- 5\nk\t1\t-\n", {0, 0, 1, 0}, 2, 3},
                    TableCase{"lonePoint", "k\t.\t5\nk\t1.\t.5\n", {0, 0, 1, 0.5F}, 2, 2},
                    TableCase{"minusInNumber", "k\t1-2\nk\t3.4.5\n", {1, -2, 3.4F, 0.5F}},
                    TableCase{"exponents", "k\t1e3\t-2.5E-1\nk\t3e\t4e+\n", {1000, -0.25F, 3, 4}},
                    TableCase{"tooManyCells", "k\t1\t2\t9\nk\t3\t4\t9\n", {1, 2, 3, 4}},
                    TableCase{"shortRow", "k\t1\nk\t3\t4\n", {1, 0, 3, 4}, 2, 1},
                    TableCase{"fieldAloneOnItsLine", "k\n1\t2\nk\t3\t4\n", {0, 0, 2, 0}, 2, 3},
                    TableCase{"blankLinesAndFormFeeds", "\n \n\t\v\f\r\nk\t1\t2\n\n\nk\t3\t4\n\n", {1, 2, 3, 4}},
                    TableCase{"fieldTouchesBytesOfAllKinds",
                              "{9}\x80\0\t1\t2\nk\t\0\xff\t3\0\xca"
                              "4\n"s,
                              {1, 2, 3, 4}},
                    TableCase{"beyondSingle", "k\t1e39\t-1e39\nk\t1e-60\t3e9\n", {inf, -inf, 0, 3e9F}},
                    TableCase{"belowTheLeastMaximum", "k\t-3e9\t0\nk\t-4e9\t0\n", {-3e9F, 0, -4e9F, 0}},
                    TableCase{"lastRowWithoutLineEnd", "k\t1\t2\nk\t3\t45", {1, 2, 3, 45}},
                    TableCase{"nothing", "", {0, 0, 0, 0}, 0}, TableCase{"oneRow", "k\t-1\t-2\n", {-1, -2, 0, 0}, 1},
                    TableCase{"cutInANumber", "k\t1\t23", {1, 0, 0, 0}, 0},
                    TableCase{"cutInAnExponent", "k\t1\t2e-", {1, 0, 0, 0}, 0},
                    TableCase{"cutInAGroup", "k\t1\t{2 3,", {1, 0, 0, 0}, 0},
                    TableCase{"cutBehindANumber", "k\t1\t", {1, 0, 0, 0}, 0},
                    TableCase{"lastRowCutInItsField", "k\t1\t2\nk", {1, 2, 0, 0}, 1},
                    TableCase{"lastRowCutInANumber", "k\t1\t2\nk\t34", {1, 2, 0, 0}, 1},
                    TableCase{"lastRowCutInAGroup", "k\t1\t2\nk\t3\t{4, 5", {1, 2, 3, 0}, 1}),
    [](const auto& row) { return row.param.name; });

struct NotesCase {
    const char* name;
    const char* table; // of one leading field and two columns
    std::uint32_t rows;
    std::vector<const char*> notes; // a part of each
};

TEST(ResultTable, NotesNameWhatIsOddAndItsFirstRow) {
    for (const NotesCase& row : {
             NotesCase{"noNumber", "h\nk 1 2\nk 1\nk 3 4", 3, {"1 cells of the result table hold no number", "row 2"}},
             NotesCase{"cut", "h\nk 1 2\nk 1 2", 3, {"holds 1 of 3 rows", "Row 2 of the result table is cut off"}},
             NotesCase{"headerOnly", "h without a line end", 3, {"0 of 3 rows"}},
             NotesCase{"infinite", "h\nk 1 2\nk 3 -1e39\nk 1e39 {1e39 -1e39}\n", 3, {"3 cells", "in row 2"}},
             NotesCase{"moreRows", "h\nk 1 2\nk 3 4\n\nk 5 6\nk 7\nk 8", 2, {"has 3 more rows than the 2"}},
             NotesCase{"noneOfMoreRows", "h\nk 1 2\nk 3 4", 0, {"has 2 more rows than the 0"}},
         }) {
        SCOPED_TRACE(row.name);
        const TableShape shape{row.rows, 1, 2};
        std::string all;
        for (const std::string& note : parseResultTable(row.table, shape).notes(shape)) {
            all += note + "\n";
        }
        for (const char* part : row.notes) {
            EXPECT_THAT(all, HasSubstr(part));
        }
        const auto most = static_cast<std::ptrdiff_t>(row.notes.size());
        EXPECT_TRUE(std::ranges::count(all, '\n') > 0 && std::ranges::count(all, '\n') <= most) << all;
    }
}

TEST(ResultTable, HasNoCellsWithoutRowsOrColumns) {
    const ResultTable none = parseResultTable("h\nk 1 2\n", {0, 1, 2});
    EXPECT_THAT(none.cells, IsEmpty());
    EXPECT_THAT(none.maxima, ElementsAre(noMaximum, noMaximum));
    const ResultTable noColumns = parseResultTable("h\nk 1 2\nk 3 4\n", {2, 1, 0});
    EXPECT_THAT(noColumns.cells, IsEmpty());
    EXPECT_EQ(noColumns.rowsFound, 2U);
    EXPECT_EQ(parseResultTable("h\n1\n\n", {3, 0, 0}).rowsFound, 2U);
    EXPECT_THAT(parseResultTable("h\n1\n\n2 3\n", {3, 0, 1}).cells, ElementsAre(1, 0, 2));
}

TEST(ResultTable, IsRefusedBeforeAllocationWhenItsBlockDoesNotFit) {
    for (const TableShape& shape : {TableShape{4294967295U, 2, 3U << 20U}, {4294967295U, 2, SIZE_MAX}}) {
        try {
            (void)parseResultTable("h\n", shape);
            FAIL() << "not refused";
        } catch (const OrreryError& error) {
            EXPECT_THAT(error.problem(), HasSubstr("4294967295 rows"));
        }
    }
}

// ---- The plain number's own road gives what the exact one gives

float exactFloat(std::string_view text) {
    float value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

const std::vector<const TableKernels*>& allKernels() {
    static const auto all = [] {
        std::vector<const TableKernels*> kernels = {&portableTableKernels()};
        if (avx2TableKernels() != nullptr) {
            kernels.push_back(avx2TableKernels());
        }
        return kernels;
    }();
    return all;
}

void expectSameBits(const std::string& number) {
    const std::string text = std::string(tableSlack, '7') + number + "\n" + std::string(tableSlack, '7');
    const auto end = static_cast<std::uint32_t>(text.size() - tableSlack);
    const std::array<std::uint32_t, 2> borders = {tableSlack - 1, end - 1};
    const RowPlace place{0, 1};
    const float exact = exactFloat(number);
    for (const TableKernels* kernels : allKernels()) {
        float value = -1;
        std::size_t first = 0;
        EXPECT_EQ(kernels->fillRows({text.data(), tableSlack, end}, borders.data(), {&place, 1}, {&value, 1}, first),
                  0U)
            << number;
        EXPECT_EQ(std::bit_cast<std::uint32_t>(value), std::bit_cast<std::uint32_t>(exact))
            << kernels->name << ", " << number << ": " << value << " is not " << exact;
    }
}

TEST(PlainNumber, IsRoundedOnce) {
    std::istringstream numbers("0 -0 -0.0 5. .5 0.1 16777217 16777219 16777217.0000001 "
                               "1.00000017881393432617187 1.000000178813934326171874 9007199254740993 "
                               "123456789012345678 1234567890123456789 123456789012345678901234567890 "
                               "0.000000000000000001 0.0000000000000000000000000001 99999999.99999999 "
                               "00000000000000000001 1844674407370955.1631 "
                               "340282346638528859811704183484516925440 1e-45 3.4e38 1234567.8e-3 1.5e-07 "
                               "2.60810099e-08 -9.87654321E+12 9007199254740991e22 1e-22 1e23 7e-30 3e038 "
                               "16777217e0");
    for (std::string number; numbers >> number;) {
        expectSameBits(number);
    }
    std::mt19937_64 random(11);
    std::uniform_int_distribution<std::uint32_t> mantissa(1U << 23U, (1U << 24U) - 1);
    for (int round = 0; round < 20'000; ++round) {
        const int exponent = static_cast<int>(random() % 40) - 30;
        const double halfWay = std::ldexp(static_cast<double>(mantissa(random)) + 0.5, exponent - 23);
        expectSameBits(shortestText(halfWay)); // exactly between two singles, or as near as 17 digits come
        const std::string number =
            std::to_string(random() % 1'000'000'000) + "." + std::to_string(random() % 1'000'000'000);
        expectSameBits(number);
        expectSameBits(number + "e" + std::to_string(static_cast<int>(random() % 60) - 32));
    }
}

// ---- Any text: every block size, number of threads and kernel against the whole

/// A line of numbers, mostly, with everything between them that a table may hold; every other line is regular.
std::string randomRow(std::mt19937& random, std::size_t columns) {
    const std::array<const char*, 26> pieces = {"\t", "\t",  "\t",    ",",   " ",    "\r",  "{",   "}", "-",
                                                ".",  "nan", "e",     "+",   "x",    "{}",  "1e5", "0", "-0.5",
                                                "1.", "-0",  "1e999", "-.5", "\x8a", "7e-", "E+3", "\v"};
    const auto number = [&random] { return shortestText((static_cast<float>(random()) - 2e9F) * 1e-6F); };
    std::string row = "field";
    if (random() % 2 == 0) {
        for (std::size_t column = 0; column < columns; ++column) {
            row += "\t" + (random() % 16 == 0 ? std::string(pieces.at(random() % pieces.size())) + "1" : number());
        }
        return row + "\n";
    }
    row += "\t";
    for (auto length = random() % 24; length > 0; --length) {
        row += random() % 3 == 0 ? pieces.at(random() % pieces.size()) : number() + "\t";
    }
    return row + (random() % 50 == 0 ? "\r\n\n \n" : "\n");
}

std::string bitsOf(std::span<const float> values) {
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(float)};
}

void expectSame(const ResultTable& read, const ResultTable& expected, const TableShape& shape) {
    EXPECT_TRUE(bitsOf(read.cells) == bitsOf(expected.cells));
    EXPECT_TRUE(bitsOf(read.maxima) == bitsOf(expected.maxima));
    EXPECT_EQ(read.notes(shape), expected.notes(shape));
}

/// The table whose rows were handed on.
ResultTable gathered(const std::string& path, const TableShape& shape, const TableReadOptions& options) {
    std::vector<float> cells;
    ResultTable table = streamResultTable(
        path, shape, [&](std::span<const float> rows) { cells.insert(cells.end(), rows.begin(), rows.end()); },
        options);
    table.cells = CellBlock(cells);
    return table;
}

/// Reads the file by every road and expects the same each time.
void expectSameByAllRoads(const std::string& path, const ResultTable& expected, const TableShape& shape) {
    for (const std::size_t blockSize : {1U, 7U, 64U, 4096U, 65536U}) {
        if (blockSize < 4096 && shape.rows > 10'000) {
            continue;
        }
        for (const unsigned threads : {0U, 1U, 2U, 5U}) { // none: handed on
            for (const TableKernels* kernels : allKernels()) {
                SCOPED_TRACE(testing::Message() << blockSize << " bytes, " << threads << " threads, " << kernels->name);
                const TableReadOptions options{blockSize, {}, threads, kernels};
                expectSame(threads == 0 ? gathered(path, shape, options) : readResultTable(path, shape, options),
                           expected, shape);
            }
        }
    }
}

/// ORRERY_TEST_ROWS asks for a longer look than a test may take each time.
std::uint32_t differentialRows() {
    const char* wanted = std::getenv("ORRERY_TEST_ROWS");
    return wanted == nullptr ? 3000 : static_cast<std::uint32_t>(std::stoul(wanted));
}

TEST(ResultTable, IsTheSameByEveryRoad) {
    std::mt19937 random(5);
    const TableShape shape{differentialRows(), 1, 5};
    std::string text = "header\n";
    for (std::uint32_t row = 0; row < shape.rows; ++row) {
        text += row < 100 || row > 1000 ? randomRow(random, shape.columns) : "field\t-1\t-0\t-2.5\t1e-7\t-3\n";
    }
    const test::TemporaryFolder folder;
    const std::string path = folder.path() + "orrery_table.txt";
    for (const std::size_t cut : {std::size_t{0}, std::size_t{1}, text.size() / 2}) {
        SCOPED_TRACE(testing::Message() << cut << " cut");
        const std::string_view left = std::string_view(text).substr(0, text.size() - cut);
        std::ofstream(path, std::ios::binary) << left;
        expectSameByAllRoads(path, parseResultTable(left, shape), shape);
    }
}

TEST(ResultTable, MaximumIsTheFirstOfTheZeros) {
    const TableShape shape{2000, 1, 2};
    std::string text = "header\n";
    for (std::uint32_t row = 0; row < shape.rows; ++row) {
        text += row < 1000 ? "k\t-1\t-5\n" : row % 2 == 0 ? "k\t-0\t0\n" : "k\t0\t-0\n";
    }
    const test::TemporaryFolder folder;
    const std::string path = folder.path() + "orrery_zeros.txt";
    std::ofstream(path, std::ios::binary) << text;
    const ResultTable expected = parseResultTable(text, shape);
    EXPECT_TRUE(bitsOf(expected.maxima) == bitsOf(std::array{-0.0F, 0.0F}));
    expectSameByAllRoads(path, expected, shape);
}

// ---- Files

TEST(ResultTableFile, OfOneEndlessLineIsRefused) {
    const test::TemporaryFolder folder;
    const std::string path = folder.path() + "orrery_endless.txt";
    std::ofstream(path) << "header\n1 2";
    std::filesystem::resize_file(path, std::uintmax_t{1} << 31U); // sparse: two gigabytes of NULs
    try {
        (void)readResultTable(path, {2, 1, 1});
        FAIL() << "not refused";
    } catch (const OrreryError& error) {
        EXPECT_THAT(error.problem(), HasSubstr("not a result table"));
        EXPECT_EQ(error.place().file, path);
    }
    std::filesystem::remove(path);
}

TEST(ResultTableFile, ReadingCanBeCancelled) {
    const test::TemporaryFolder folder;
    const std::string path = folder.path() + "orrery_cancelled.txt";
    std::ofstream(path) << "header\n" << std::string(100'000, '\n');
    std::uint64_t seen = 0;
    TableReadOptions options;
    options.blockSize = 1000;
    options.threads = 3;
    options.progress = [&, caller = std::this_thread::get_id()](std::uint64_t bytes) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        return (seen = bytes) < 5000;
    };
    EXPECT_THROW((void)readResultTable(path, {2, 1, 1}, options), OrreryError);
    EXPECT_GE(seen, 5000U);
}

TEST(ResultTableFile, ThatIsMissingOrNoRegularFileIsReported) {
    EXPECT_THROW((void)readResultTable(testing::TempDir() + "orrery_none.txt", {}), ResultTableMissing);
    EXPECT_THROW((void)readResultTable(testing::TempDir(), {}), ResultTableMissing);
}

} // namespace
} // namespace orrery
