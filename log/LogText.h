#pragma once

#include "log/LogBytes.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// A growing text, divided into rows for display. Made for gigabytes: up to a limit in memory, the older text in a
/// file; an append costs no more than its piece.
///
/// A row ends at "\n", "\r\n" or "\r", or after `longestRow` bytes, between two characters. There is always a last row,
/// which may be empty. A "\r" at the very end ends no row yet, since a "\n" may follow.
/// Where the disk has no room the oldest text is dropped. The other offsets and the numbers of the other rows stay, and
/// the text then begins with a row that says how much is gone.
class LogText {
public:
    static constexpr std::uint64_t longestRow = 2048;
    static constexpr std::uint64_t defaultMemoryLimit = 256U << 20U;

    /// Offsets of bytes; the end is without the line end.
    struct Row {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        friend bool operator==(const Row&, const Row&) = default;
    };

    /// @param memoryLimit at least 1 MB
    explicit LogText(LogStoreMaker makeStore = {}, std::uint64_t memoryLimit = defaultMemoryLimit);

    void clear();
    void append(std::string_view piece);

    [[nodiscard]] std::uint64_t begin() const; // offset of the first byte that is still there
    [[nodiscard]] std::uint64_t end() const { return m_bytes.end(); }
    [[nodiscard]] std::uint64_t firstRow() const; // its number
    [[nodiscard]] std::uint64_t endRow() const { return m_endRow; }
    [[nodiscard]] std::uint64_t widestRow() const { return m_widest; } // bytes

    /// Up to `count` rows from the row `first`, or from the first one that is still there.
    [[nodiscard]] std::vector<Row> rows(std::uint64_t first, std::size_t count) const;
    /// The number of the row in which the offset lies, line end included.
    [[nodiscard]] std::uint64_t rowAt(std::uint64_t offset) const;

    /// What is there of the stretch; a question mark for each byte that cannot be read back from the disk. The only
    /// member that may be called on several threads at once, while nothing is appended.
    [[nodiscard]] std::string bytes(std::uint64_t begin, std::uint64_t end) const;
    /// The same, or nothing when some of it cannot be read back.
    [[nodiscard]] std::optional<std::string> wholeBytes(std::uint64_t begin, std::uint64_t end) const;

private:
    static constexpr std::uint64_t bytesPerCheckpoint = 1U << 16U;

    struct Break {
        std::uint64_t end = 0;  // of the row
        std::uint64_t next = 0; // where the next one begins
    };
    struct Checkpoint {
        std::uint64_t row = 0;
        std::uint64_t begin = 0;
    };

    [[nodiscard]] std::optional<std::uint64_t> find(char byte, std::uint64_t begin, std::uint64_t end) const;
    [[nodiscard]] char at(std::uint64_t offset) const { return m_bytes.blockFrom(offset).front(); }
    [[nodiscard]] std::optional<Break> breakOf(std::uint64_t rowBegin, std::uint64_t searched) const;
    [[nodiscard]] std::uint64_t betweenCharacters(std::uint64_t offset) const;
    void indexRows();
    void endLastRow(Break at);
    void endPlainRows();
    void forgetDroppedRows();
    bool copy(std::uint64_t begin, std::uint64_t end, std::string& bytes) const;

    LogStoreMaker m_makeStore;
    std::uint64_t m_memoryLimit;
    LogBytes m_bytes;
    std::uint64_t m_endRow = 1;
    std::uint64_t m_lastRow = 0;  // where it begins
    std::uint64_t m_searched = 0; // no line end lies between m_lastRow and here
    std::uint64_t m_widest = 0;
    std::deque<Checkpoint> m_checkpoints{{}}; // the first row that is there, and the first in each further 64 KB
    std::string m_notice;                     // the text's first row, once something is dropped
};

} // namespace orrery
