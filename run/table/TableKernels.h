#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace orrery {

/// A piece of a table's text in memory, all whole lines, and where its white space stands. Nothing is owned.
///
/// Text and borders have room around them: `tableSlack` bytes may be read on either side of the text, and as many
/// borders written after the last one.
struct TableText {
    const char* base = nullptr; // all positions count from here
    std::uint32_t begin = 0;    // tableSlack at least
    std::uint32_t end = 0;
};
inline constexpr std::uint32_t tableSlack = 64;

/// One row found in a text: borders[first] stands before its values, borders[last] is the line feed that ends them.
struct RowPlace {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

struct BorderCounts {
    std::size_t borders = 0;
    std::size_t lineFeeds = 0;
    bool neighbours = false; // two borders stand side by side, or one at the very beginning
};

/// The two loops that go over every byte of a table, as one kind of processor does them best. All give the same bits.
struct TableKernels {
    const char* name;
    /// Writes the position of every white-space character (blank, tab, line feed, vertical tab, form feed, carriage
    /// return). Room for one border per byte must be there.
    BorderCounts (*findBorders)(const TableText& text, std::uint32_t* borders);
    /// Fills one row of cells per place. Returns the number of cells that got no number, and in `firstWithout` the
    /// index of the first such row if there is one.
    std::size_t (*fillRows)(const TableText& text, const std::uint32_t* borders, std::span<const RowPlace> rows,
                            std::span<float> cells, std::size_t& firstWithout);
};

/// For every processor.
[[nodiscard]] const TableKernels& portableTableKernels();
/// For those that have AVX2; nullptr where this one has not.
[[nodiscard]] const TableKernels* avx2TableKernels();
/// The fastest for this processor.
[[nodiscard]] const TableKernels& bestTableKernels();

} // namespace orrery
