#include "run/lock/RunLock.h"

#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace orrery {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(RunLock, TellsASecondOneWhoHoldsIt) {
    const test::TemporaryFolder folder;
    {
        auto first = RunLock::tryAcquire(folder.path(), "/a\nb.xml");
        ASSERT_TRUE(std::holds_alternative<RunLock>(first));
        const auto second = RunLock::tryAcquire(folder.path(), "other");
        ASSERT_TRUE(std::holds_alternative<RunLock::Holder>(second));
        EXPECT_EQ(std::get<RunLock::Holder>(second).processId, getpid());
        EXPECT_EQ(std::get<RunLock::Holder>(second).description, "/a\nb.xml");
        const RunLock moved = std::move(std::get<RunLock>(first));
        EXPECT_TRUE(std::holds_alternative<RunLock::Holder>(RunLock::tryAcquire(folder.path(), "")));
    }
    EXPECT_TRUE(std::holds_alternative<RunLock>(RunLock::tryAcquire(folder.path(), "")));
}

TEST(RunLock, IsKeptByTheDirectoryWhereItsFileIsClearedAway) {
    const test::TemporaryFolder folder;
    const auto first = RunLock::tryAcquire(folder.path(), "first");
    const auto& lock = std::get<RunLock>(first);
    EXPECT_EQ(lock.standing(), RunLock::Standing::Whole);
    std::filesystem::remove(lock.path());
    EXPECT_TRUE(std::holds_alternative<RunLock::Holder>(RunLock::tryAcquire(folder.path(), "second")));
    EXPECT_EQ(lock.standing(), RunLock::Standing::FileLost) << "another one stands in its place";
    std::filesystem::remove_all(folder.path());
    std::filesystem::create_directory(folder.path());
    EXPECT_EQ(lock.standing(), RunLock::Standing::Lost);
}

TEST(RunLock, NeverTouchesAPlantedFile) {
    const test::TemporaryFolder folder;
    const std::string precious = folder.write("precious", "keep");
    const std::string lock = folder.path() + "orrery-run.lock";
    const auto acquire = [&folder] { (void)RunLock::tryAcquire(folder.path(), "x"); };
    std::filesystem::create_symlink(precious, lock);
    EXPECT_THAT(acquire, ThrowsMessage<OrreryError>(HasSubstr("symbolic link")));
    std::filesystem::remove(lock);
    std::filesystem::create_hard_link(precious, lock);
    EXPECT_THAT(acquire, ThrowsMessage<OrreryError>(HasSubstr("another name")));
    std::filesystem::remove(lock);
    ASSERT_EQ(mkfifo(lock.c_str(), 0600), 0);
    EXPECT_THAT(acquire, ThrowsMessage<OrreryError>(HasSubstr("not an ordinary file")));
    EXPECT_EQ(readWholeFile(precious), "keep");
}

} // namespace
} // namespace orrery
