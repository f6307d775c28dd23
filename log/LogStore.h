#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace orrery {

/// A place outside memory for the older text of a log, gone with the object. Every byte has its offset in the log.
class LogStore {
public:
    LogStore() = default;
    LogStore(const LogStore&) = delete;
    LogStore& operator=(const LogStore&) = delete;
    virtual ~LogStore() = default;

    /// False when there is no room, or what was written may not be whole: nothing of it counts then.
    [[nodiscard]] virtual bool write(std::uint64_t offset, std::string_view bytes) = 0;
    /// False when they cannot be read. May be called on several threads at once while nothing is written.
    [[nodiscard]] virtual bool read(std::uint64_t offset, std::span<char> bytes) const = 0;
    /// Gives room back, at least that of all before the offset. Returns the first offset that is still there.
    [[nodiscard]] virtual std::uint64_t dropBefore(std::uint64_t offset) = 0;
};

/// Null when there is no place.
using LogStoreMaker = std::function<std::unique_ptr<LogStore>()>;

/// A file without a name: in the temporary directory or, since a file in memory would be no gain, on the next disk. It
/// leaves others a part of the disk's room.
[[nodiscard]] std::unique_ptr<LogStore> makeLogStore();

} // namespace orrery
