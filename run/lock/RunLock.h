#pragma once

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace orrery {

/// One run at a time uses a temporary directory, because its result table has a fixed name there. The holder keeps
/// the lock from the start of its engine until it has read the table; who inherits descriptors() keeps it until it
/// ends. It is gone with the last of these processes.
///
/// The lock is the system's, on a file in the directory that tells who runs there, and on the directory itself where
/// that is the user's own: a program that clears old files away can take the file, but not the directory's lock.
class RunLock {
public:
    /// Who holds the lock.
    struct Holder {
        long processId = 0;      // 0 when not known
        unsigned run = 0;        // counts that process's runs
        std::string description; // what runs there, for messages; may be empty
    };

    /// Whether nobody else can have run in the directory meanwhile.
    enum class Standing {
        Whole,
        FileLost, // the file is gone or another one, but the directory's lock has kept others out
        Lost      // both are gone: another run's table may lie there
    };

    /// The lock, or its present holder. `directory` ends in "/". `description` tells others who runs (a file's path).
    /// @throws OrreryError when the lock file cannot be made
    [[nodiscard]] static std::variant<RunLock, Holder> tryAcquire(const std::string& directory,
                                                                  const std::string& description);

    RunLock(RunLock&& other) noexcept;
    RunLock& operator=(RunLock&& other) noexcept;
    RunLock(const RunLock&) = delete;
    RunLock& operator=(const RunLock&) = delete;
    ~RunLock(); // gives the lock back, unless somebody has inherited it

    [[nodiscard]] Standing standing() const;
    [[nodiscard]] const std::string& path() const { return m_path; } // of the file
    /// As a holder that others are shown.
    [[nodiscard]] Holder holder() const;
    /// Whoever keeps these open keeps the lock.
    [[nodiscard]] std::vector<int> descriptors() const;

private:
    RunLock(std::string path, int file, int directory);

    std::string m_path;
    unsigned m_run = 0;
    int m_file = -1;
    int m_directory = -1; // -1: not the user's own, or its file system knows no such locks
};

} // namespace orrery
