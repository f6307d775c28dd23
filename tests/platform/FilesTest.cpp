#include "platform/Files.h"

#include "platform/Log.h"
#include "platform/UserDefaults.h"
#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

namespace orrery {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

/// The lines that are logged while it lives.
class LogRecorder {
public:
    LogRecorder() {
        setLogSink([this](std::string_view line) { lines.emplace_back(line); });
    }
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;
    ~LogRecorder() { setLogSink({}); }
    std::vector<std::string> lines;
};

TEST(AbsolutePath, RemovesDotsAsText) {
    const std::string here = std::filesystem::current_path();
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"/", "/"}, {"/a//b/./c/", "/a/b/c"},     {"/../a/../..", "/"},    {"a", here + "/a"}, {"./a/..", here},
        {"", here}, {"/a/..b/...", "/a/..b/..."}, {"/a\n\xFF", "/a\n\xFF"}};
    for (const auto& [path, absolute] : rows)
        EXPECT_EQ(absolutePath(path), absolute) << path;
}

TEST(FileUrl, EncodesEveryByteOutsideTheUnreservedSet) {
    EXPECT_EQ(fileUrl("/a b/%\xFF#é~.-_"), "file:///a%20b/%25%FF%23%C3%A9~.-_");
}

TEST(ReadableFile, TakesRegularFilesOnlyAndNeverBlocks) {
    const test::TemporaryFolder folder;
    ASSERT_EQ(mkfifo((folder.path() + "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop", folder.path() + "loop");
    const std::vector<std::pair<std::string, std::string>> rows = {{folder.path() + "pipe", "it is a named pipe"},
                                                                   {folder.path(), "it is a directory"},
                                                                   {"/dev/null", "it is a device"},
                                                                   {folder.path() + "none", "there is no such file"},
                                                                   {folder.path() + "loop", "links lead in a circle"},
                                                                   {folder.path() + std::string("a\0b", 3), "NUL"}};
    for (const auto& row : rows) {
        EXPECT_THAT([&] { const ReadableFile file(row.first); }, ThrowsMessage<OrreryError>(HasSubstr(row.second)));
    }
    std::filesystem::create_symlink("real", folder.path() + "link");
    folder.write("real", "bytes");
    EXPECT_EQ(readWholeFile(folder.path() + "link"), "bytes");
    EXPECT_THROW((void)readWholeFile(folder.path() + "link", 4), OrreryError);
}

TEST(ReplaceFile, RefusesWhatIsNoRegularFile) {
    const test::TemporaryFolder folder;
    const std::string& path = folder.path();
    ASSERT_EQ(mkfifo((path + "pipe").c_str(), 0600), 0);
    std::filesystem::create_directory(path + "directory");
    std::filesystem::create_symlink("nowhere", path + "dangling");
    std::filesystem::create_symlink("circle", path + "circle");
    std::filesystem::create_symlink("/dev/null", path + "device");
    const std::vector<std::pair<std::string, std::string>> rows = {
        {"pipe", "it is a named pipe"},
        {"directory", "it is a directory"},
        {"directory/", "it is a directory"},
        {"dangling", "a file that does not exist"},
        {"circle", "lead in a circle"},
        {"device", "it is a device"},
        {"none/file", "there is no such file or directory. No file was made."},
        {std::string("a\0b", 3), "NUL"},
        {"", "it is a directory"},
        {std::string(256, 'x'), "its name is too long"}};
    for (const auto& row : rows) {
        const auto save = [&] { replaceFile(path + row.first, "new"); };
        EXPECT_THAT(save, ThrowsMessage<OrreryError>(HasSubstr(row.second))) << row.first;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path), {}), 5);
}

TEST(ReplaceFile, FollowsLinksAndKeepsTheMode) {
    const test::TemporaryFolder folder;
    const std::string target = folder.write("target", "old");
    std::filesystem::create_directory(folder.path() + "sub");
    std::filesystem::create_symlink("../target", folder.path() + "sub/link");
    ASSERT_EQ(chmod(target.c_str(), 0640), 0);
    replaceFile(folder.path() + "sub/link", "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path() + "sub/link"));
    EXPECT_EQ(readWholeFile(target), "new");
    struct stat status {};
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(ReplaceFile, MakesNewFilesWithTheUsersMask) {
    const test::TemporaryFolder folder;
    const mode_t before = umask(0027);
    for (const std::string& name : {std::string(255, 'x'), std::string("-rf"), std::string("a\xFF\n%s")}) {
        replaceFile(folder.path() + name, "");
        struct stat status {};
        ASSERT_EQ(stat((folder.path() + name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0640U);
    }
    umask(before);
}

TEST(ReplaceFile, TellsOfFurtherNamesOfTheFile) {
    const test::TemporaryFolder folder;
    std::filesystem::create_hard_link(folder.write("one", "old"), folder.path() + "two");
    const LogRecorder log;
    replaceFile(folder.path() + "one", "new");
    EXPECT_THAT(log.lines, testing::ElementsAre(HasSubstr("hard links")));
    EXPECT_EQ(readWholeFile(folder.path() + "two"), "old");
}

TEST(ReplaceFile, RemovesWhatKilledSavesLeftAndNothingElse) {
    const test::TemporaryFolder folder;
    const std::string old = folder.write(".orrery-0123456789abcdef", "left by a killed save");
    const std::string young = folder.write(".orrery-0123456789abcdee", "perhaps just being written");
    const std::string other = folder.write(".orrery-0123456789abcdeX", "of another form");
    const timespec longAgo[2] = {{1000000000, 0}, {1000000000, 0}};
    for (const std::string& path : {old, other})
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), longAgo, 0), 0);
    replaceFile(folder.path() + "file", "new");
    EXPECT_FALSE(fileExists(old));
    EXPECT_TRUE(fileExists(young));
    EXPECT_TRUE(fileExists(other));
}

TEST(ReplaceFile, NeverShowsAMixtureToAReader) {
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", std::string(100000, 'a'));
    std::thread writer([&path] {
        for (const char c : std::string("bcdefghijklmnop"))
            replaceFile(path, std::string(100000, c));
    });
    for (char last = 'a'; last != 'p';) {
        const std::string bytes = readWholeFile(path);
        last = bytes[0];
        EXPECT_EQ(bytes, std::string(100000, last));
    }
    writer.join();
}

TEST(AvailableMemory, IsBoundedByTheProcessLimit) {
    constexpr rlim_t room = 64U << 20U;
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &limit), 0);
    const rlimit small = {pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + room, limit.rlim_max};
    const std::uint64_t before = availableMemory();
    ASSERT_EQ(setrlimit(RLIMIT_AS, &small), 0);
    const std::uint64_t after = availableMemory();
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    EXPECT_GT(before, room);
    EXPECT_LE(after, room);
    EXPECT_GT(after, 0U);
}

TEST(PathForAuxiliaryExecutable, FindsExecutablesBesideTheProgramOnly) {
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").filename();
    EXPECT_EQ(pathForAuxiliaryExecutable(program), std::filesystem::read_symlink("/proc/self/exe").string());
    for (const char* name : {"none", "", "..", "../bin/platformTests", "/bin/sh"}) {
        EXPECT_EQ(pathForAuxiliaryExecutable(name), std::nullopt) << name;
    }
}

TEST(Log, IsOneLineOnStandardError) {
    testing::internal::CaptureStderr();
    logLine("one\ntwo \x1B[31m");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "one\\ntwo \\x1b[31m\n");
}

TEST(UserDefaults, OutliveTheObject) {
    const test::TemporaryFolder folder;
    const std::string path = folder.path() + "new/sub/defaults.json";
    FileUserDefaults(path).setObject("file:///a", "lastPath");
    FileUserDefaults(path).setObject("\"\n", "other");
    EXPECT_EQ(FileUserDefaults(path).stringForKey("lastPath"), "file:///a");
    FileUserDefaults(path).setObject(std::nullopt, "lastPath");
    EXPECT_EQ(FileUserDefaults(path).stringForKey("lastPath"), std::nullopt);
    EXPECT_EQ(FileUserDefaults(path).stringForKey("other"), "\"\n");
}

TEST(UserDefaults, KeepADamagedFileBesideTheNewOne) {
    for (const std::string damaged : {"{\"a\": ", "[1]", "{\"a\": 1}", ""}) {
        const test::TemporaryFolder folder;
        const std::string path = folder.write("defaults.json", damaged);
        const LogRecorder log;
        FileUserDefaults defaults(path);
        EXPECT_EQ(defaults.stringForKey("a"), std::nullopt);
        EXPECT_EQ(readWholeFile(path), damaged);
        defaults.setObject("1", "b");
        EXPECT_EQ(readWholeFile(path + "~"), damaged);
        EXPECT_EQ(FileUserDefaults(path).stringForKey("b"), "1");
        EXPECT_EQ(log.lines.size(), 1U);
    }
}

TEST(UserDefaults, LogAStoreThatFailsAndGoOn) {
    const test::TemporaryFolder folder;
    const LogRecorder log;
    FileUserDefaults defaults(folder.write("file", "") + "/defaults.json");
    defaults.setObject("1", "a");
    EXPECT_EQ(defaults.stringForKey("a"), "1");
    EXPECT_THAT(log.lines, testing::ElementsAre(HasSubstr("was not saved")));
}

} // namespace
} // namespace orrery
