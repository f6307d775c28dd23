#include "platform/TemporaryDirectory.h"

#include "platform/Files.h"
#include "platform/values/OrreryError.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

namespace orrery {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

/// A folder and an environment of the test's own.
class TemporaryDirectory : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"TMPDIR", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "HOME"}) {
            const char* const value = getenv(name);
            if (value != nullptr) m_before[name] = value;
            unsetenv(name);
        }
    }
    void TearDown() override {
        for (const char* name : {"TMPDIR", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "HOME"}) {
            m_before.count(name) != 0 ? setenv(name, m_before[name].c_str(), 1) : unsetenv(name);
        }
    }
    /// A folder of that name and mode in the test's own; its path without "/".
    std::string make(const std::string& name, mode_t mode) const {
        std::filesystem::create_directories(m_folder.path() + name);
        EXPECT_EQ(chmod((m_folder.path() + name).c_str(), mode), 0);
        return m_folder.path() + name;
    }

    test::TemporaryFolder m_folder;

private:
    std::map<std::string, std::string> m_before;
};

TEST_F(TemporaryDirectory, IsTheUsersChoiceWithASlash) {
    const std::string chosen = make("with space\xFF", 0700);
    for (const std::string& value : {chosen, chosen + "/"}) {
        setenv("TMPDIR", value.c_str(), 1);
        EXPECT_EQ(temporaryDirectory(), chosen + "/");
    }
}

TEST_F(TemporaryDirectory, MakesARelativeChoiceAbsoluteForTheEngineToo) {
    const std::filesystem::path here = std::filesystem::current_path();
    make("sub", 0700);
    std::filesystem::current_path(m_folder.path());
    setenv("TMPDIR", "./sub", 1);
    const std::string directory = temporaryDirectory();
    std::filesystem::current_path(here);
    EXPECT_EQ(directory, m_folder.path() + "sub/");
    EXPECT_EQ(getenv("TMPDIR"), m_folder.path() + "sub");
}

TEST_F(TemporaryDirectory, RefusesAChoiceThatCannotHoldFiles) {
    const std::string file = m_folder.write("file", "");
    const std::vector<std::pair<std::string, std::string>> rows = {{m_folder.path() + "none", "there is no such file"},
                                                                   {file, "is not a directory"},
                                                                   {"/proc/self", "cannot be written to"}};
    for (const auto& [value, reason] : rows) {
        setenv("TMPDIR", value.c_str(), 1);
        if (value.starts_with("/proc") && access(value.c_str(), W_OK) == 0) continue; // root may write anywhere
        EXPECT_THAT([] { (void)temporaryDirectory(); }, ThrowsMessage<OrreryError>(HasSubstr(reason)));
    }
}

TEST_F(TemporaryDirectory, IsOtherwisePrivateAndExported) {
    struct Row {
        const char* name;
        std::string runtime;
        std::string cache;
        std::string home;
        std::string expected;
    };
    const std::string runtime = make("runtime", 0700);
    const std::string open = make("open", 0777);
    const std::string& root = m_folder.path();
    for (const Row& row :
         {Row{"runtime", runtime, root + "cache", root, runtime + "/orrery/"},
          {"noRuntime", "", root + "a/cache", root, root + "a/cache/orrery/"},
          {"runtimeOpenToOthers", open, root + "b", root, root + "b/orrery/"},
          {"missingRuntime", root + "none", "relative", root + "home", root + "home/.cache/orrery/"}}) {
        SCOPED_TRACE(row.name);
        setenv("TMPDIR", "", 1);
        setenv("XDG_RUNTIME_DIR", row.runtime.c_str(), 1);
        setenv("XDG_CACHE_HOME", row.cache.c_str(), 1);
        setenv("HOME", row.home.c_str(), 1);
        EXPECT_EQ(temporaryDirectory(), row.expected);
        EXPECT_EQ(getenv("TMPDIR") + std::string("/"), row.expected);
        EXPECT_EQ(temporaryDirectory(), row.expected);
        struct stat status {};
        ASSERT_EQ(stat(row.expected.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0700U);
    }
}

TEST_F(TemporaryDirectory, RefusesAPreparedDirectory) {
    make("wide/orrery", 0755);
    make("link", 0700);
    std::filesystem::create_symlink(make("elsewhere", 0700), m_folder.path() + "link/orrery");
    make("file", 0700);
    m_folder.write("file/orrery", "");
    make("shared", 01777);
    const std::vector<std::pair<std::string, std::string>> rows = {{"wide", "open to other users"},
                                                                   {"link", "is a symbolic link"},
                                                                   {"file", "is not a directory"},
                                                                   {"shared", "where every user can write"}};
    for (const auto& [name, reason] : rows) {
        setenv("XDG_CACHE_HOME", (m_folder.path() + name).c_str(), 1);
        EXPECT_THAT([] { (void)temporaryDirectory(); }, ThrowsMessage<OrreryError>(HasSubstr(reason))) << name;
        EXPECT_EQ(getenv("TMPDIR"), nullptr);
    }
}

} // namespace
} // namespace orrery
