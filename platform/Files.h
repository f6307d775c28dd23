#pragma once

#include "platform/values/Date.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orrery {

// Paths are byte strings as the system has them; they need not be UTF-8.

[[nodiscard]] bool fileExists(const std::string& path);

/// The file's modification date with the resolution of the file system; std::nullopt when it cannot be read.
[[nodiscard]] std::optional<Date> modificationDate(const std::string& path);

/// What tells a file from another one at the same path, and from itself before it was written again.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    Date modified;
    Date changed; // of its content or its description; no program sets it

    [[nodiscard]] bool isSameFileAs(const FileIdentity& other) const { // whatever was written into it
        return device == other.device && inode == other.inode;
    }
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// That of the file at the path now, links followed; std::nullopt when there is none.
[[nodiscard]] std::optional<FileIdentity> fileIdentity(const std::string& path);

/// Waits until a file that is written from now on has another identity, 20 ms at most: files are stamped by a clock
/// that ticks every few milliseconds.
void awaitNewStamp(const FileIdentity& identity);

/// A file opened for reading without blocking on a FIFO or device: only regular files are taken. Move-only.
class ReadableFile {
public:
    /// @throws OrreryError naming the path and the system's reason, or that it is not a regular file
    explicit ReadableFile(const std::string& path);
    ReadableFile(ReadableFile&& other) noexcept;
    ReadableFile& operator=(ReadableFile&& other) noexcept;
    ReadableFile(const ReadableFile&) = delete;
    ReadableFile& operator=(const ReadableFile&) = delete;
    ~ReadableFile();

    /// Up to `capacity` bytes from `offset`, fewer only at the end of the file, 0 beyond it. Interrupted and short
    /// reads are carried on.
    /// @throws OrreryError naming the path, the position and the system's reason
    std::size_t readAt(char* buffer, std::size_t capacity, std::uint64_t offset) const;
    [[nodiscard]] std::uint64_t size() const;    // bytes now; another program may still change it
    [[nodiscard]] Date modificationDate() const; // now, of the file that is open
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] int release(); // the descriptor, now the caller's

private:
    std::string m_path;
    int m_descriptor = -1;
};

inline constexpr std::uint64_t largestWholeFile = 1ULL << 28U; // bytes

/// The whole file. @throws OrreryError as ReadableFile, or when it is larger than `limit` bytes or changes meanwhile
[[nodiscard]] std::string readWholeFile(const std::string& path, std::uint64_t limit = largestWholeFile);

/// Replaces the file at the path by the bytes, whole or not at all: a temporary file beside the target is written,
/// synced and renamed over it, and the directory is synced. Symbolic links are followed; an existing file's mode,
/// access list and extended attributes are kept. Returns only when the new file is on the disk. Temporary files that
/// killed saves left there are removed.
/// @throws OrreryError naming the path, the system's reason and that the old file is unchanged
void replaceFile(const std::string& path, std::string_view bytes);

/// The same for contents too large to hold: written in pieces into the temporary file, in place once finish() returns.
class FileReplacement {
public:
    /// @throws OrreryError as replaceFile, and so do the others
    explicit FileReplacement(const std::string& path);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement(); // without finish() the old file stays

    void write(std::string_view bytes);
    /// The temporary file, for a library that writes by path: it opens the file there, locks it if it likes, writes and
    /// closes it before finish(). In place of write().
    [[nodiscard]] std::string lend();
    void finish();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Removes from the directory what killed saves of this user left there, as every save does that is made in it: their
/// temporary files that nobody has locked and that are older than a minute. Does what it can and reports nothing.
void removeSaveLitter(const std::string& directory);

/// The path made absolute against the current directory, "." and ".." removed as text; links are not followed.
[[nodiscard]] std::string absolutePath(const std::string& path);

/// The path as an absolute "file://" URL, bytes outside the unreserved set percent-encoded.
[[nodiscard]] std::string fileUrl(const std::string& absolutePath);

/// Where the running program's auxiliary executable of that name lies: beside the program, or in
/// ../libexec/orrery seen from there. Always absolute; std::nullopt when no executable file is found.
[[nodiscard]] std::optional<std::string> pathForAuxiliaryExecutable(const std::string& name);

/// Bytes of memory that a new block can take now without swapping: the least of what the system, the control group
/// and the process limits leave.
[[nodiscard]] std::uint64_t availableMemory();

} // namespace orrery
