#include "platform/KnownFile.h"

#include "platform/Files.h"
#include "support/TemporaryFolder.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>
#include <functional>
#include <vector>

namespace orrery {
namespace {

namespace fs = std::filesystem;
using Change = KnownFile::Change;

TEST(KnownFile, ChangesWithItsContentsOnly) {
    struct Case {
        const char* name;
        std::function<void(const std::string& path)> act;
        Change change;
    };
    const std::vector<Case> cases = {
        {"nothing", [](auto&) {}, Change::None},
        {"touched", [](auto& path) { fs::last_write_time(path, fs::file_time_type::min()); }, Change::None},
        {"another file of these contents",
         [](auto& path) {
             fs::copy(path, path + "2");
             fs::rename(path + "2", path);
         },
         Change::None},
        {"same size and time",
         [](auto& path) {
             const auto time = fs::last_write_time(path);
             std::ofstream(path) << "NEW";
             fs::last_write_time(path, time);
         },
         Change::Contents},
        {"a directory",
         [](auto& path) {
             fs::remove(path);
             fs::create_directory(path);
         },
         Change::Contents},
        {"removed", [](auto& path) { fs::remove(path); }, Change::Missing},
    };
    for (const Case& row : cases) {
        const test::TemporaryFolder folder;
        const std::string path = folder.write("file", "old");
        std::string bytes;
        const KnownFile read = KnownFile::read(path, bytes);
        EXPECT_EQ(bytes, "old");
        const KnownFile written = replaceKnownFile(path, "new");
        EXPECT_EQ(read.changeAt(path), Change::Contents) << row.name;
        row.act(path);
        EXPECT_EQ(written.changeAt(path), row.change) << row.name;
    }
}

TEST(KnownFile, IsClaimedByEachThatHasItOpen) {
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", "old");
    std::string bytes;
    KnownFile mine = KnownFile::read(path, bytes);
    KnownFile others = KnownFile::read(path, bytes);
    mine.claim();
    EXPECT_FALSE(mine.isClaimedElsewhere(path));
    EXPECT_TRUE(others.isClaimedElsewhere(path));
    others.claim();
    EXPECT_TRUE(mine.isClaimedElsewhere(path));
    mine = replaceKnownFile(path, "new"); // the other one has the old file, which is gone
    EXPECT_FALSE(others.isClaimedElsewhere(path)) << "not yet claimed";
    mine.claim();
    EXPECT_TRUE(others.isClaimedElsewhere(path));
    EXPECT_FALSE(mine.isClaimedElsewhere(path));
    mine = {};
    EXPECT_FALSE(others.isClaimedElsewhere(path));
}

constexpr const char* accessList = "system.posix_acl_access";

/// Owner rw, user 1234 as given, the group and others nothing: the mode alone would say rw for the group.
std::string listFor1234(char permissions) {
    std::string list{2, 0, 0, 0};
    const auto add = [&](char tag, char allowed, const char* id) { list += std::string{tag, 0, allowed, 0} + id; };
    const char* const nobody = "\xFF\xFF\xFF\xFF";
    add(0x01, 6, nobody);
    list += std::string{0x02, 0, permissions, 0, '\xD2', 0x04, 0, 0};
    add(0x04, 0, nobody);
    add(0x10, 6, nobody);
    add(0x20, 0, nobody);
    return list;
}

std::string attribute(const std::string& path, const char* name) {
    std::string value(1000, '\0');
    const ssize_t length = getxattr(path.c_str(), name, value.data(), value.size());
    return length < 0 ? fmt::format("error {}", errno) : value.substr(0, static_cast<std::size_t>(length));
}

TEST(ReplaceFile, KeepsAttributesAndAccessList) {
    const test::TemporaryFolder folder;
    const std::string listed = folder.write("listed", "old");
    const std::string plain = folder.write("plain", "old");
    const auto set = [](const std::string& path, const char* name, const std::string& value) {
        return setxattr(path.c_str(), name, value.data(), value.size(), 0);
    };
    if (set(listed, "user.note", "kept") != 0 || set(listed, accessList, listFor1234(6)) != 0) {
        GTEST_SKIP() << "the file system has no attributes or access lists";
    }
    ASSERT_EQ(set(folder.path(), "system.posix_acl_default", listFor1234(4)), 0); // what new files here would get
    replaceFile(listed, "new");
    replaceFile(plain, "new");
    EXPECT_EQ(attribute(listed, "user.note"), "kept");
    EXPECT_EQ(attribute(listed, accessList), listFor1234(6));
    EXPECT_EQ(attribute(plain, accessList), fmt::format("error {}", ENODATA));
    struct stat status {};
    ASSERT_EQ(stat(plain.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

} // namespace
} // namespace orrery
