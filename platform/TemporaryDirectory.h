#pragma once

#include <optional>
#include <string>
#include <variant>

namespace orrery {

/// The user's temporary directory, ending in "/".
///
/// TMPDIR when the user set it (made absolute, must be a directory that can be written). Otherwise a directory of the
/// user's own under the runtime directory, else the cache directory, mode 0700, owner and mode checked, which is then
/// exported as TMPDIR so that a child sees the same one. Never a predictable name in a shared directory.
/// Call it first from the main thread, before any other starts.
/// @throws OrreryError naming the directory and what is wrong with it
[[nodiscard]] std::string temporaryDirectory();

/// One run at a time uses a temporary directory, because its result table has a fixed name there. The holder keeps
/// the lock from the start of its engine until it has read the table; it is gone with the process at the latest.
class RunLock {
public:
    /// Who holds the lock.
    struct Holder {
        long processId = 0;      // 0 when not known
        std::string description; // what runs there, for messages; may be empty
    };

    /// The lock, or its present holder. `directory` ends in "/". `description` tells others who runs (a file's path).
    /// @throws OrreryError when the lock file cannot be made
    [[nodiscard]] static std::variant<RunLock, Holder> tryAcquire(const std::string& directory,
                                                                  const std::string& description);

    RunLock(RunLock&& other) noexcept;
    RunLock& operator=(RunLock&& other) noexcept;
    RunLock(const RunLock&) = delete;
    RunLock& operator=(const RunLock&) = delete;
    ~RunLock(); // gives the lock back

private:
    explicit RunLock(int descriptor) : m_descriptor(descriptor) {}
    int m_descriptor = -1;
};

} // namespace orrery
