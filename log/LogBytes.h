#pragma once

#include "log/LogStore.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <string_view>

namespace orrery {

/// The bytes of a log by their offsets: the newest in memory up to a limit, older ones in a store, and where that has
/// no room, the oldest nowhere.
class LogBytes {
public:
    static constexpr std::uint64_t blockSize = 1U << 18U;

    /// @param memoryLimit bytes, at least four blocks
    /// @param makeStore is called when the limit is reached
    LogBytes(std::uint64_t memoryLimit, LogStoreMaker makeStore)
        : m_memoryLimit(memoryLimit), m_makeStore(std::move(makeStore)) {}

    void append(std::string_view piece);

    [[nodiscard]] std::uint64_t begin() const { return m_begin; } // what was before it is dropped
    [[nodiscard]] std::uint64_t end() const { return m_end; }
    [[nodiscard]] bool hasStore() const { return m_store != nullptr; } // else there was no place for one

    /// The longest stretch from the offset that lies in one block; empty only at the end. It is there until the next
    /// call. On the main thread.
    [[nodiscard]] std::string_view blockFrom(std::uint64_t offset) const;
    /// Fills `bytes` from the offset. False when some cannot be read back: they are question marks. May be called on
    /// several threads at once while nothing is appended.
    bool copy(std::uint64_t offset, std::span<char> bytes) const;

private:
    using Block = std::unique_ptr<char[]>;
    struct Paged {
        std::uint64_t begin = 0;
        Block block; // null: nothing there
    };

    void addBlock();
    [[nodiscard]] bool storeOldest();
    [[nodiscard]] const char* page(std::uint64_t blockBegin) const;

    std::uint64_t m_memoryLimit;
    LogStoreMaker m_makeStore;
    std::unique_ptr<LogStore> m_store; // has all from m_begin to m_memoryBegin
    std::deque<Block> m_blocks;        // all from m_memoryBegin
    std::uint64_t m_begin = 0;
    std::uint64_t m_memoryBegin = 0;
    std::uint64_t m_end = 0;
    mutable std::array<Paged, 4> m_pages; // of the store, the one that was used last in front
};

} // namespace orrery
