#include "platform/Files.h"
#include "support/TemporaryFolder.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

// Saves in a process of their own whose system calls are watched, made to fail, or its last.
namespace orrery {
namespace {

using testing::HasSubstr;

const std::string oldBytes = "old bytes";
constexpr std::size_t newSize = 100000;

void replace(std::string& text, const std::string& word, const std::string& by) {
    const std::size_t at = text.find(word);
    if (at != std::string::npos) text.replace(at, word.size(), by);
}

struct Outcome {
    int status = 0; // as waitpid gives it
    std::string error;
    std::vector<std::string> trace; // a line for each system call
};

class Save : public testing::Test {
protected:
    void SetUp() override {
        const int status = std::system("strace -o /dev/null true 2>/dev/null");
        if (status != 0) GTEST_SKIP() << "strace is not installed or may not trace";
        m_folder.write("file", oldBytes);
    }

    [[nodiscard]] std::string path() const { return m_folder.path() + "file"; }

    /// Runs a command of the shell, in which "SAVE" stands for the save and "TRACE" for strace with the log's name.
    [[nodiscard]] Outcome run(std::string command) const {
        const std::string tool = fmt::format("{}/saveTool '{}' {}", ORRERY_BIN, path(), newSize);
        replace(command, "SAVE", tool);
        replace(command, "TRACE", "strace -y -o '" + m_logs.path() + "trace" + "'");
        std::filesystem::remove(m_logs.path() + "trace");
        Outcome outcome;
        // A leak sanitizer cannot work under strace, which takes the place of its tracer.
        const std::string options = "export ASAN_OPTIONS=$ASAN_OPTIONS:detect_leaks=0; ";
        outcome.status = std::system(("{ " + options + command + "; } 2>'" + m_logs.path() + "error'").c_str());
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

/// Which call of its name is the first whose line holds the text, counted from 1 as strace counts.
struct TracedCall {
    std::string name;
    int ordinal = 0;
};

TracedCall find(const std::vector<std::string>& trace, const std::string& call, const std::string& text) {
    std::map<std::string, int> ordinals;
    for (const std::string& line : trace) {
        const std::string name = line.substr(0, line.find('('));
        const int ordinal = ++ordinals[name];
        if (name.starts_with(call) && line.find(text) != std::string::npos) return {name, ordinal};
    }
    return {};
}

struct FaultRow {
    const char* name;
    const char* call;  // how the name of the system call begins
    std::string text;  // in the trace of the one that fails
    const char* error; // what it fails with; "+" when all later ones fail too
    const char* message;
    const char* contents = "old";
};

TEST_F(Save, KeepsTheOldFileWhateverFailsAndSaysSo) {
    const std::string temporary = ".orrery-";
    const std::string directory = m_folder.path().substr(0, m_folder.path().size() - 1) + ">";
    const std::vector<FaultRow> rows = {
        {"noSpaceForTheFile", "openat", temporary, "ENOSPC", "the disk is full. The old"},
        {"readOnlyDirectory", "openat", temporary, "EACCES", "Save it under another name"},
        {"noDescriptorLeft", "openat", temporary, "EMFILE", "Close some documents"},
        {"readOnlyFile", "faccessat", "file", "EROFS", "the file is read-only"},
        {"diskFull", "write", temporary, "ENOSPC", "Make room"},
        {"quota", "write", temporary, "EDQUOT", "Make room"},
        {"writeError", "write", temporary, "EIO", "cannot be written"},
        {"accessList", "fremovexattr", temporary, "EPERM", "access list cannot be kept"},
        {"mode", "fchmod", temporary, "EPERM", "mode cannot be set"},
        {"sync", "fsync", temporary, "EIO+", "could not be written to the disk"},
        {"close", "close", temporary, "EIO", "could not be closed"},
        {"renameDenied", "rename", temporary, "EACCES", "cannot take the old file's place"},
        {"renameAcross", "rename", temporary, "EXDEV", "cannot take the old file's place"},
        {"directorySync", "fsync", directory, "EIO", "The new file is in place, but", "new"},
    };
    const Outcome plain = run("TRACE SAVE");
    ASSERT_EQ(plain.status, 0) << plain.error;
    for (const FaultRow& row : rows) {
        SCOPED_TRACE(row.name);
        m_folder.write("file", oldBytes);
        const TracedCall call = find(plain.trace, row.call, row.text);
        ASSERT_GT(call.ordinal, 0);
        const std::string_view error = row.error;
        const bool forEver = error.ends_with('+');
        const Outcome outcome =
            run(fmt::format("TRACE -e trace={0} -e inject={0}:error={1}:when={2}{3} SAVE", call.name,
                            error.substr(0, error.find('+')), call.ordinal, forEver ? "+" : ""));
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
        const int when = find(plain.trace, call, ".orrery-").ordinal;
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
    EXPECT_THAT(outcome.error,
                HasSubstr("it would be larger than files may be here. The old file is unchanged. Raise the limit"));
    EXPECT_EQ(contents(), "old");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(Save, SyncsTheFileBeforeTheNameAndTheDirectoryAfterIt) {
    std::string order;
    for (const std::string& line : run("TRACE SAVE").trace) {
        const bool temporary = line.find(".orrery-") != std::string::npos;
        if (line.starts_with("write") && temporary) order += 'w';
        if (line.starts_with("fsync")) order += temporary ? 's' : 'd';
        if (line.starts_with("rename")) order += 'r';
    }
    EXPECT_THAT(order, testing::MatchesRegex("w+srd"));
}

TEST_F(Save, NeedsNotListTheDirectory) {
    namespace fs = std::filesystem;
    const std::string folder = m_folder.path();
    const bool isRoot = geteuid() == 0; // whom modes do not stop
    if (isRoot) {
        ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
        ASSERT_EQ(chown(path().c_str(), 65534, 65534), 0);
    }
    for (const bool isNew : {false, true}) {
        if (isNew) fs::remove(path());
        fs::permissions(folder, fs::perms::owner_write | fs::perms::owner_exec);
        const Outcome outcome = run(isRoot ? "setpriv --reuid=65534 --clear-groups SAVE" : "SAVE");
        fs::permissions(folder, fs::perms::owner_all);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(contents(), "new");
    }
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
