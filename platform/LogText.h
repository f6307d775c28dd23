#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// A growing text, divided into rows for display. Made for gigabytes: the bytes are held once, and an append costs no
/// more than its piece.
///
/// A row ends at "\n", "\r\n" or "\r", or after `longestRow` bytes, between two characters. There is always a last row,
/// which may be empty. A "\r" at the very end ends no row yet, since a "\n" may follow.
class LogText {
public:
    static constexpr std::uint64_t longestRow = 2048;

    /// Offsets of bytes; the end is without the line end.
    struct Row {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        friend bool operator==(const Row&, const Row&) = default;
    };

    void clear();
    void append(std::string_view piece);

    [[nodiscard]] std::uint64_t size() const { return m_size; } // bytes
    [[nodiscard]] std::uint64_t rowCount() const { return m_rowCount; }
    [[nodiscard]] std::uint64_t widestRow() const { return m_widest; } // bytes

    /// Up to `count` rows from the row `first`.
    [[nodiscard]] std::vector<Row> rows(std::uint64_t first, std::size_t count) const;
    /// The number of the row in which the offset lies, line end included.
    [[nodiscard]] std::uint64_t rowAt(std::uint64_t offset) const;

    /// The longest stretch of bytes from the offset that lies in one block; empty only at the end.
    [[nodiscard]] std::string_view blockFrom(std::uint64_t offset) const;
    [[nodiscard]] std::string bytes(std::uint64_t begin, std::uint64_t end) const;

private:
    static constexpr std::uint64_t blockSize = 1U << 18U;
    static constexpr std::uint64_t rowsPerCheckpoint = 64;

    struct Break {
        std::uint64_t end = 0;  // of the row
        std::uint64_t next = 0; // where the next one begins
    };

    [[nodiscard]] std::optional<std::uint64_t> find(char byte, std::uint64_t begin, std::uint64_t end) const;
    [[nodiscard]] char at(std::uint64_t offset) const { return blockFrom(offset).front(); }
    [[nodiscard]] std::optional<Break> breakOf(std::uint64_t rowBegin, std::uint64_t searched) const;
    [[nodiscard]] std::uint64_t betweenCharacters(std::uint64_t offset) const;
    void indexRows();

    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::uint64_t m_size = 0;
    std::uint64_t m_rowCount = 1;
    std::uint64_t m_lastRow = 0;  // where it begins
    std::uint64_t m_searched = 0; // no line end lies between m_lastRow and here
    std::uint64_t m_widest = 0;
    std::vector<std::uint64_t> m_checkpoints{0}; // where each 64th row begins
};

} // namespace orrery
