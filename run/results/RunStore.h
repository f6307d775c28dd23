#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orrery {

/// How much is kept; pinned runs come on top of it.
struct StoreLimits {
    std::size_t runs = 20;
    std::uint64_t bytes = 10'000'000'000;
};

/// What a list of kept runs tells of one.
struct KeptRunInfo {
    std::string path;      // of the results file
    std::string setupPath; // as it was at the run
    std::string setup;     // the setup file's bytes, as readSetup takes them
    std::string started;   // "2026-11-26 09:30:00 +0000", as the next; empty where it is not known
    std::string ended;
    std::string engineEnd; // "the engine ended with exit code 3"; empty where it is not known
    std::size_t rows = 0;
    std::size_t rowsFound = 0;
    std::uint64_t bytes = 0; // of the results file
    bool pinned = false;
    std::string note; // the user's; before the user wrote one, what was noted of the results
};

/// The results files of past runs in one directory. Pins and notes lie beside them, each in a small file of its own, so
/// that results are never written again, and an index of them lies there, so that a list need not open each. Holds
/// nothing but the directory's path: several programs use one store.
///
/// Files there that are not results files, or cannot be read, are left alone and not counted. A run that is open
/// anywhere is not removed. @throws OrreryError from every member
class RunStore {
public:
    explicit RunStore(std::string directory);
    /// "orrery/runs" under the user's data directory (XDG_DATA_HOME, else ~/.local/share).
    [[nodiscard]] static std::string defaultDirectory();

    [[nodiscard]] const std::string& directory() const { return m_directory; }
    /// A free name for the results of a run: the setup's, when it started, and a number where that is taken. Makes the
    /// directory. @param started as of a RunRecord
    [[nodiscard]] std::string newPath(const std::string& setupPath, const std::string& started) const;

    /// Those of the setup, or all; the newest first. None where there is no such directory.
    [[nodiscard]] std::vector<KeptRunInfo> runs(const std::optional<std::string>& setupPath = {}) const;

    // Of a run of this store.
    void setPinned(const std::string& path, bool pinned) const;
    void setNote(const std::string& path, const std::string& note) const;
    /// Not one that is pinned, or open.
    void remove(const std::string& path) const;

    /// Removes the oldest runs until the limits hold for the rest. Left out of account are pinned runs, which always
    /// stay, and those that are open, which go another time. What killed writers left is removed as well.
    /// @param keep a run that counts, and stays whatever its size
    /// @return the paths of the runs that were removed
    std::vector<std::string> applyLimits(const StoreLimits& limits,
                                         const std::string& keep) const; // NOLINT(modernize-use-nodiscard)

private:
    /// @throws OrreryError when the path is none of a run of this store
    void requireKept(const std::string& path) const;

    std::string m_directory; // absolute
};

} // namespace orrery
