#include "platform/Files.h"
#include "support/TemporaryFolder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <map>
#include <regex>

// Saves in a process of their own whose system calls are watched, made to fail, or its last.
namespace orrery {
namespace {

using testing::HasSubstr;

const std::string oldBytes = "old bytes";
constexpr std::size_t newSize = 100000;
const std::string calls = "openat,write,fsync,close,rename,renameat,renameat2,faccessat,faccessat2,fchmod,unlinkat";

struct Outcome {
    int status = 0; // as waitpid gives it
    std::string error;
    std::vector<std::string> trace; // a line for each system call
};

class Save : public testing::Test {
protected:
    void SetUp() override {
        const int status = std::system("strace -o /dev/null true 2>/dev/null"); // NOLINT(concurrency-mt-unsafe)
        if (status != 0) GTEST_SKIP() << "strace is not installed or may not trace";
        m_folder.write("file", oldBytes);
    }

    [[nodiscard]] std::string path() const { return m_folder.path() + "file"; }

    /// Runs a command of the shell, in which "SAVE" stands for the save and "TRACE" for strace with the log's name.
    [[nodiscard]] Outcome run(std::string command) const {
        const std::string tool = fmt::format("{}/saveTool '{}' {}", ORRERY_BIN, path(), newSize);
        command = std::regex_replace(command, std::regex("SAVE"), tool);
        command = std::regex_replace(command, std::regex("TRACE"), "strace -y -o '" + m_logs.path() + "trace" + "'");
        std::filesystem::remove(m_logs.path() + "trace");
        Outcome outcome;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread here
        outcome.status = std::system(("{ " + command + "; } 2>'" + m_logs.path() + "error" + "'").c_str());
        std::getline(std::ifstream(m_logs.path() + "error"), outcome.error);
        std::ifstream trace(m_logs.path() + "trace");
        for (std::string line; std::getline(trace, line);)
            outcome.trace.push_back(line);
        return outcome;
    }

    /// Whether the file is whole, old or new.
    [[nodiscard]] std::string contents() const {
        const std::string bytes = readWholeFile(path());
        return bytes == oldBytes ? "old" : bytes == std::string(newSize, 'n') ? "new" : "a mixture";
    }
    [[nodiscard]] long filesInFolder() const {
        return std::distance(std::filesystem::directory_iterator(m_folder.path()), {});
    }

    test::TemporaryFolder m_folder;
    test::TemporaryFolder m_logs;
};

/// Which of its kind a traced call is, counted from 1 as strace's "when" counts; 0 when no line matches.
int ordinal(const std::vector<std::string>& trace, const std::string& call, const std::regex& pattern) {
    int count = 0;
    for (const std::string& line : trace) {
        if (!std::regex_search(line, std::regex("^" + call))) continue;
        ++count;
        if (std::regex_search(line, pattern)) return count;
    }
    return 0;
}

struct FaultRow {
    const char* name;
    const char* call;    // system calls, as a pattern
    const char* pattern; // of the one that fails
    const char* fault;   // strace's "error=…", "%" stands for its ordinal
    const char* message;
    const char* contents;
};

TEST_F(Save, KeepsTheOldFileWhateverFailsAndSaysSo) {
    const std::vector<FaultRow> rows = {
        {"noSpaceForTheFile", "openat", "\\.orrery-", "error=ENOSPC:when=%", "No space left on device. The old", "old"},
        {"readOnlyDirectory", "openat", "\\.orrery-", "error=EACCES:when=%", "Save it under another name", "old"},
        {"noDescriptorLeft", "openat", "\\.orrery-", "error=EMFILE:when=%", "Close some documents", "old"},
        {"readOnlyFile", "faccessat2?", "file", "error=EROFS:when=%", "the file is read-only", "old"},
        {"diskFull", "write", "\\.orrery-", "error=ENOSPC:when=%", "Make room", "old"},
        {"quota", "write", "\\.orrery-", "error=EDQUOT:when=%", "Make room", "old"},
        {"writeErrorForEver", "write", "\\.orrery-", "error=EIO:when=%", "cannot be written", "old"},
        {"mode", "fchmod", "\\.orrery-", "error=EPERM:when=%", "mode cannot be set", "old"},
        {"sync", "fsync", "\\.orrery-", "error=EIO:when=%+", "could not be written to the disk", "old"},
        {"close", "close", "\\.orrery-", "error=EIO:when=%", "could not be closed", "old"},
        {"renameDenied", "rename(at2?)?", "\\.orrery-", "error=EACCES:when=%", "cannot take the old file's place",
         "old"},
        {"renameAcross", "rename(at2?)?", "\\.orrery-", "error=EXDEV:when=%", "cannot take the old file's place",
         "old"},
        {"directorySync", "fsync", "test-[A-Za-z0-9]+>", "error=EIO:when=%", "The new file is in place, but", "new"},
    };
    const Outcome plain = run("TRACE -e trace=" + calls + " SAVE");
    ASSERT_EQ(plain.status, 0) << plain.error;
    for (const FaultRow& row : rows) {
        SCOPED_TRACE(row.name);
        m_folder.write("file", oldBytes);
        const int when = ordinal(plain.trace, row.call, std::regex(row.pattern));
        ASSERT_GT(when, 0);
        const std::string fault = std::regex_replace(row.fault, std::regex("%"), std::to_string(when));
        const std::string set = "'/^" + std::string(row.call) + "$'";
        const Outcome outcome = run("TRACE -e trace=" + set + " -e inject=" + set + ":" + fault + " SAVE");
        EXPECT_THAT(outcome.trace, testing::Contains(HasSubstr("(INJECTED)")));
        EXPECT_EQ(WEXITSTATUS(outcome.status), 1);
        EXPECT_THAT(outcome.error, testing::AllOf(HasSubstr(path() + ": "), HasSubstr(row.message)));
        EXPECT_EQ(contents(), row.contents);
        EXPECT_EQ(filesInFolder(), 1) << "litter";
    }
}

TEST_F(Save, CarriesOnWhenInterrupted) {
    const Outcome plain = run("TRACE -e trace=write,fsync SAVE");
    for (const char* call : {"write", "fsync"}) {
        m_folder.write("file", oldBytes);
        const int when = ordinal(plain.trace, call, std::regex("\\.orrery-"));
        const Outcome outcome =
            run(fmt::format("TRACE -e trace={0} -e inject={0}:error=EINTR:when={1} SAVE", call, when));
        EXPECT_THAT(outcome.trace, testing::Contains(HasSubstr("(INJECTED)")));
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(contents(), "new");
    }
}

TEST_F(Save, SurvivesTheFileSizeLimit) {
    const Outcome outcome = run("( ulimit -f 1; exec SAVE )");
    EXPECT_TRUE(WIFEXITED(outcome.status));
    EXPECT_EQ(WEXITSTATUS(outcome.status), 1);
    EXPECT_THAT(outcome.error, HasSubstr("File too large. The old file is unchanged. Raise the limit"));
    EXPECT_EQ(contents(), "old");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(Save, SyncsTheFileBeforeTheNameAndTheDirectoryAfterIt) {
    std::string order;
    for (const std::string& line : run("TRACE -e trace=" + calls + " SAVE").trace) {
        const bool temporary = line.find(".orrery-") != std::string::npos;
        if (line.starts_with("write") && temporary) order += 'w';
        if (line.starts_with("fsync")) order += temporary ? 's' : 'd';
        if (line.starts_with("rename")) order += 'r';
    }
    EXPECT_THAT(order, testing::MatchesRegex("w+srd"));
}

TEST_F(Save, LeavesTheOldOrTheNewFileWhereverItIsKilled) {
    const std::vector<std::string> trace = run("TRACE SAVE").trace;
    std::map<std::string, int> ordinals; // strace counts each system call by itself
    bool saving = false;
    std::string seen;
    for (const std::string& line : trace) {
        const std::string call = line.substr(0, line.find('('));
        const int when = ++ordinals[call];
        saving = saving || (call != "execve" && line.find(path()) != std::string::npos);
        if (!saving || call == "exit_group" || line.starts_with("+++")) continue;
        m_folder.write("file", oldBytes);
        const Outcome outcome =
            run(fmt::format("TRACE -e trace={0} -e inject={0}:signal=KILL:when={1} SAVE", call, when));
        ASSERT_NE(outcome.status, 0) << line;
        ASSERT_THAT(contents(), testing::AnyOf("old", "new")) << line;
        seen += contents() == "old" ? 'o' : 'n';
    }
    EXPECT_THAT(seen, testing::MatchesRegex("o+n+")) << seen;
}

} // namespace
} // namespace orrery
