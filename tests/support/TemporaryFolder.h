#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace orrery::test {

/// A folder of a test's own, removed with the object. path() ends in "/".
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "orrery-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary folder";
        m_path = name + "/";
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Writes a file of that name and returns its path.
    std::string write(const std::string& name, std::string_view bytes) const {
        std::ofstream(m_path + name, std::ios::binary) << bytes;
        return m_path + name;
    }

private:
    std::string m_path;
};

} // namespace orrery::test
