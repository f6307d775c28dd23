#pragma once

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/types.h>

#include <string>
#include <vector>

namespace orrery::test {

/// How a process ended and what it wrote.
struct Finished {
    int exitCode = -1;
    std::string out;
    std::string err;

    [[nodiscard]] nlohmann::json json() const { return nlohmann::json::parse(out); }
};

/// orrery-batch as a process, with the folder as current and temporary directory. Killed at its end if need be.
class RunningTool {
public:
    /// `standardOutput` and `standardError` are files' paths in place of what is captured. `folder` ends in "/".
    RunningTool(std::string folder, std::vector<std::string> arguments, std::string standardOutput = {},
                std::string standardError = {});
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;
    ~RunningTool();

    Finished finish();
    /// Waits until standard error holds the text; fails the test when the tool ends before.
    void awaitError(const std::string& text) const;
    void sendSignal(int number) const;

private:
    [[nodiscard]] bool hasEnded() const;

    std::string m_out;   // files that take the output
    std::string m_err;   // empty: not captured
    pid_t m_process = 0; // not yet waited for
};

/// A folder with a model "model.xml" (part Crop in level Field: inputs water and seed, recorded outputs biomass and
/// yield) and a setup "setup.orrery" of it that sweeps water from 0 to 2 by 1 over 2 days.
class Tool : public testing::Test {
protected:
    Tool();

    [[nodiscard]] Finished run(const std::vector<std::string>& arguments) const {
        return RunningTool(m_folder.path(), arguments).finish();
    }
    /// A shell script in the folder that takes the engine's place; returns its path.
    [[nodiscard]] std::string makeEngine(const std::string& script) const;

    TemporaryFolder m_folder;
};

/// The table that a run of the fixture's setup leaves: 6 rows, two responses.
extern const char* const resultTable;

} // namespace orrery::test
