#include "log/LogText.h"

#include "log/LogFile.h"
#include "log/LogSearch.h"
#include "platform/Files.h"
#include "platform/Workers.h"
#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cctype>
#include <filesystem>
#include <new>
#include <stdexcept>

namespace orrery {
namespace {

using Rows = std::vector<std::string>;

Rows rowsOf(const LogText& text) {
    Rows rows;
    for (const LogText::Row& row : text.rows(0, text.endRow()))
        rows.push_back(text.bytes(row.begin, row.end));
    return rows;
}

struct RowCase {
    const char* name;
    std::string text;
    Rows rows;
};
const std::string full(LogText::longestRow, 'x');
const std::string almost = full.substr(1);

class LogRows : public testing::TestWithParam<RowCase> {};

TEST_P(LogRows, AreTheSameHoweverTheTextArrives) {
    for (const std::size_t length : {std::size_t{1}, std::size_t{3}, GetParam().text.size() + 1}) {
        LogText text;
        for (std::size_t i = 0; i < GetParam().text.size(); i += length)
            text.append(GetParam().text.substr(i, length));
        EXPECT_EQ(rowsOf(text), GetParam().rows) << "in pieces of " << length;
        EXPECT_EQ(text.endRow(), GetParam().rows.size());
        EXPECT_EQ(text.bytes(0, text.end()), GetParam().text);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Ends, LogRows,
    testing::Values(RowCase{"empty", "", {""}}, RowCase{"unfinished", "a", {"a"}},
                    RowCase{"finished", "a\n", {"a", ""}}, RowCase{"emptyRows", "\n\n", {"", "", ""}},
                    RowCase{"allEnds", "a\r\nb\rc\nd\n\re", {"a", "b", "c", "d", "", "e"}},
                    RowCase{"openReturn", "a\r", {"a"}}, RowCase{"returns", "a\r\r\n\r\rb", {"a", "", "", "", "b"}},
                    RowCase{"fullRow", full, {full}}, RowCase{"endBehindFullRow", full + "\nb", {full, "b"}},
                    RowCase{"bothBehindFullRow", full + "\r\nb", {full, "b"}},
                    RowCase{"longLine", full + full + "b", {full, full, "b"}},
                    RowCase{"neverInsideACharacter", almost + "äöü", {almost, "äöü"}},
                    RowCase{"noCharacters",
                            std::string(LogText::longestRow + 1, '\x80'),
                            {std::string(LogText::longestRow, '\x80'), "\x80"}},
                    RowCase{"nul", std::string("a\0b\n", 4), {std::string("a\0b", 3), ""}}),
    [](const auto& row) { return row.param.name; });

TEST(LogText, FindsRowsFarIntoManyBlocks) {
    LogText text;
    std::uint64_t size = 0;
    std::vector<std::uint64_t> begins;
    for (int i = 0; i < 50'000; ++i) {
        begins.push_back(size);
        const std::string line = std::string(static_cast<std::size_t>(i % 40), 'a') + "\n";
        text.append(line);
        size += line.size();
    }
    ASSERT_EQ(text.endRow(), 50'001U);
    EXPECT_EQ(text.widestRow(), 39U);
    for (const std::uint64_t row : {0U, 1U, 63U, 64U, 65U, 12'345U, 49'999U}) {
        EXPECT_EQ(text.rows(row, 1).at(0), (LogText::Row{begins[row], begins[row] + row % 40}));
        EXPECT_EQ(text.rowAt(begins[row]), row);
        EXPECT_EQ(text.rowAt(begins[row] + row % 40), row);
    }
    EXPECT_EQ(text.rowAt(size), 50'000U);
    EXPECT_EQ(text.rows(50'000, 9).size(), 1U);
    EXPECT_TRUE(text.rows(50'001, 1).empty());
    text.clear();
    EXPECT_EQ(rowsOf(text), Rows{""});
}

LogPattern pattern(const std::string& asciiText) {
    std::vector<std::array<std::string, 2>> characters;
    for (const char c : asciiText) {
        const std::string small(1, static_cast<char>(std::tolower(c)));
        characters.push_back({small, std::string(1, static_cast<char>(std::toupper(c)))});
    }
    return LogPattern(std::move(characters));
}

std::optional<std::uint64_t> found(const LogText& text, LogPattern what, std::uint64_t start,
                                   SearchDirection direction) {
    LogSearch search(text, std::move(what), start, direction);
    LogSearch::State state{};
    while ((state = search.step()) == LogSearch::State::Running) {
    }
    if (state == LogSearch::State::NotFound) return std::nullopt;
    return search.match().begin;
}

TEST(LogSearch, GoesAroundOnce) {
    constexpr auto forward = SearchDirection::Forward;
    constexpr auto backward = SearchDirection::Backward;
    LogText text;
    text.append("Day one\nday two\n");
    EXPECT_EQ(found(text, pattern("DAY"), 0, forward), 0U);
    EXPECT_EQ(found(text, pattern("day"), 1, forward), 8U);
    EXPECT_EQ(found(text, pattern("day"), 9, forward), 0U) << "wraps";
    EXPECT_EQ(found(text, pattern("day"), 8, backward), 0U);
    EXPECT_EQ(found(text, pattern("day"), 0, backward), 8U) << "wraps";
    EXPECT_EQ(found(text, pattern("days"), 3, forward), std::nullopt);
    EXPECT_EQ(found(text, pattern("two\n"), 99, forward), 12U);
    EXPECT_EQ(found(LogText(), pattern("a"), 0, backward), std::nullopt);
}

TEST(LogSearch, FindsAcrossTheBordersOfBlocksAndSteps) {
    for (const std::uint64_t begin : {(1U << 18U) - 2, (1U << 20U) - 1, (1U << 20U) - 4, (2U << 20U) + 7}) {
        LogText text;
        text.append(std::string(begin, '.'));
        text.append("needle");
        text.append(std::string(3U << 20U, '.'));
        for (const std::uint64_t start : {std::uint64_t{0}, begin + 1, text.end()}) {
            EXPECT_EQ(found(text, pattern("needle"), start, SearchDirection::Forward), begin);
            EXPECT_EQ(found(text, pattern("needle"), start, SearchDirection::Backward), begin);
        }
    }
}

TEST(LogSearch, FormsOfACharacterMayDifferInLength) {
    LogText text;
    text.append("xⱥȺx");
    const LogPattern twice({{"ⱥ", "Ⱥ"}, {"ⱥ", "Ⱥ"}});
    EXPECT_EQ(found(text, twice, 0, SearchDirection::Forward), 1U);
}

/// Cancels once it has seen that much of the work done.
class Panel : public WaitPanel {
public:
    explicit Panel(double cancelledAt = 2) : m_cancelledAt(cancelledAt) {}
    void begin(std::string_view) override { isOpen = true; }
    bool update(double fractionDone) override {
        seen = fractionDone;
        return fractionDone < m_cancelledAt;
    }
    void end() override { isOpen = false; }
    double seen = 0;
    bool isOpen = false;

private:
    double m_cancelledAt;
};

/// A disk of some blocks, for bytes whose offsets go up. Makes holes, or gives all its room back at once.
class SmallDisk : public LogStore {
public:
    SmallDisk(std::size_t capacity, bool makesHoles) : m_capacity(capacity), m_makesHoles(makesHoles) {}
    bool write(std::uint64_t offset, std::string_view bytes) override {
        if (m_bytes.size() + bytes.size() > m_capacity) return false;
        if (m_bytes.empty()) m_begin = offset;
        EXPECT_EQ(offset, m_begin + m_bytes.size());
        m_bytes += bytes;
        return true;
    }
    bool read(std::uint64_t offset, std::span<char> bytes) const override {
        if (offset < m_begin || offset + bytes.size() > m_begin + m_bytes.size()) return false;
        return m_bytes.copy(bytes.data(), bytes.size(), offset - m_begin) == bytes.size();
    }
    std::uint64_t dropBefore(std::uint64_t offset) override {
        const std::uint64_t end = m_makesHoles ? std::min(offset, m_begin + m_bytes.size()) : m_begin + m_bytes.size();
        m_bytes.erase(0, end - std::min(m_begin, end));
        return m_begin = std::max(end, m_begin);
    }

private:
    std::size_t m_capacity;
    bool m_makesHoles;
    std::uint64_t m_begin = 0;
    std::string m_bytes;
};

constexpr std::uint64_t leastMemory = 4 * LogBytes::blockSize;

struct LongLogCase {
    const char* name;
    LogStoreMaker makeStore;
    std::string line; // again and again
    std::string gone; // how much of 12 MB, as the first row says
};
void PrintTo(const LongLogCase& row, std::ostream* out) { // NOLINT(readability-identifier-naming): GoogleTest's name
    *out << row.name;
}
LogStoreMaker smallDisk(std::size_t blocks, bool makesHoles) {
    return [=] { return std::make_unique<SmallDisk>(blocks * LogBytes::blockSize, makesHoles); };
}

class LongLog : public testing::TestWithParam<LongLogCase> {};

TEST_P(LongLog, IsReadFoundAndSavedAsFarBackAsThereIsRoom) {
    const std::string& line = GetParam().line;
    std::string all;
    while (all.size() < 12'000'000)
        all += line;
    all += "needle";
    LogText text(GetParam().makeStore, leastMemory);
    for (std::size_t at = 0; at < all.size(); at += 65'000)
        text.append(std::string_view(all).substr(at, 65'000));
    std::string kept = all;
    std::string notice;
    if (!GetParam().gone.empty()) {
        const auto first = text.rows(0, 2);
        ASSERT_EQ(first.at(0).begin, text.begin());
        notice = text.bytes(first[0].begin, first[1].begin);
        EXPECT_THAT(notice, testing::StartsWith("[" + GetParam().gone + " of older text left out here: "));
        kept.erase(0, first[1].begin);
        EXPECT_TRUE(line.size() > LogText::longestRow || kept.starts_with(line)) << "from the begin of a row";
        EXPECT_EQ(text.firstRow() + 1, text.rowAt(first[1].begin));
    }
    EXPECT_TRUE(text.bytes(0, text.end()) == notice + kept);
    EXPECT_EQ(found(text, pattern("NEEDLE"), 0, SearchDirection::Forward), all.size() - 6);
    if (line.size() < LogText::longestRow) {
        for (const std::uint64_t part : {1U, 2U, 3U}) {
            const std::uint64_t row = text.firstRow() + (text.endRow() - text.firstRow()) / 4 * part;
            const std::uint64_t begin = row * line.size();
            EXPECT_EQ(text.rows(row, 1).at(0), (LogText::Row{begin, begin + line.size() - 1}));
            EXPECT_EQ(text.rowAt(begin + line.size() - 1), row);
        }
    }
    const test::TemporaryFolder folder;
    Panel panel;
    EXPECT_TRUE(saveLog(text, folder.path() + "log.txt", panel));
    EXPECT_TRUE(readWholeFile(folder.path() + "log.txt") == notice + kept);
    text.clear();
    EXPECT_EQ(rowsOf(text), Rows{""});
}

INSTANTIATE_TEST_SUITE_P(Rooms, LongLog,
                         testing::Values(LongLogCase{"onTheDisk", makeLogStore, "a line of some words\n", ""},
                                         LongLogCase{"endlessLine", makeLogStore, std::string(5000, 'x'), ""},
                                         LongLogCase{"emptyLines", makeLogStore, "\n", ""},
                                         LongLogCase{"noPlace", {}, "a line of some words\n", "11 MB"},
                                         LongLogCase{"full", smallDisk(20, true), "a line of some words\n", "8.3 MB"},
                                         LongLogCase{"fullWithoutHoles", smallDisk(20, false), "\n", "10 MB"},
                                         LongLogCase{"fullFromTheBegin", smallDisk(0, true), std::string(5000, 'x'),
                                                     "11 MB"}),
                         [](const auto& row) { return row.param.name; });

TEST(SaveLog, RefusesWhatCannotBeReadBack) {
    class BadDisk : public SmallDisk {
    public:
        BadDisk() : SmallDisk(1U << 30U, true) {}
        bool read(std::uint64_t, std::span<char>) const override { return false; }
    };
    LogText text([] { return std::make_unique<BadDisk>(); }, leastMemory);
    text.append(std::string(2 * leastMemory, 'x'));
    const test::TemporaryFolder folder;
    Panel panel;
    EXPECT_THROW((void)saveLog(text, folder.path() + "log.txt", panel), OrreryError);
    EXPECT_FALSE(fileExists(folder.path() + "log.txt"));
    EXPECT_EQ(text.bytes(0, 2), "??");
    EXPECT_FALSE(text.rows(0, 10).empty());
}

TEST(SaveLog, LeavesTheOldFileAndNothingElseWhenCancelled) {
    const test::TemporaryFolder folder;
    const std::string path = folder.path() + "log.txt";
    replaceFile(path, "old");
    LogText text;
    const std::string piece(1U << 20U, 'x');
    for (int count = 0; count < 256; ++count)
        text.append(piece);
    Panel panel(0.001);
    EXPECT_FALSE(saveLog(text, path, panel));
    EXPECT_GT(panel.seen, 0.001);
    EXPECT_LT(panel.seen, 1);
    EXPECT_FALSE(panel.isOpen);
    EXPECT_EQ(readWholeFile(path), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(RunBeside, WaitsAndPassesFailuresOfBothSidesOn) {
    std::atomic<bool> waited = false;
    runBeside([&] { waited.wait(false); },
              [&] {
                  waited = true;
                  waited.notify_one();
              });
    EXPECT_THROW(runBeside([] { throw std::bad_alloc(); }, [] {}), std::bad_alloc);
    std::atomic<bool> released = false;
    const auto failingWait = [&] {
        released = true;
        released.notify_one();
        throw std::length_error("waiting");
    };
    EXPECT_THROW(runBeside([&] { released.wait(false); }, failingWait), std::length_error);
}

} // namespace
} // namespace orrery
