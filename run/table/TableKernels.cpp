#include "run/table/TableKernels.h"

#include "run/table/RowScanner.h"

#include <bit>
#include <cstring>

namespace orrery {

namespace {

constexpr std::uint64_t everyByte = 0x0101010101010101U;
constexpr std::uint64_t highBits = 0x80 * everyByte;

/// The high bit of every byte that is one of the characters `first` … `last`, of 8 bytes of which `low` holds 7 bits.
std::uint64_t between(std::uint64_t low, std::uint8_t first, std::uint8_t last) {
    const std::uint64_t notBelow = low + (0x80U - first) * everyByte;
    const std::uint64_t above = low + (0x7FU - last) * everyByte;
    return notBelow & ~above & highBits;
}

struct Masks {
    std::uint64_t borders;
    std::uint64_t lineFeeds;
};

Masks masksOf(const char* text) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    if constexpr (std::endian::native == std::endian::big) {
        bytes = __builtin_bswap64(bytes);
    }
    const std::uint64_t low = bytes & ~highBits;
    return {(between(low, '\t', '\r') | between(low, ' ', ' ')) & ~bytes, between(low, '\n', '\n') & ~bytes};
}

BorderCounts findBorders(const TableText& text, std::uint32_t* borders) {
    BorderCounts counts;
    std::uint32_t next = text.begin; // where a neighbour of the last border would stand
    for (std::uint32_t at = text.begin; at < text.end; at += 8) {
        Masks masks = masksOf(text.base + at);
        if (text.end - at < 8) {
            const std::uint64_t inside = (1ULL << (8 * (text.end - at))) - 1;
            masks = {masks.borders & inside, masks.lineFeeds & inside};
        }
        counts.lineFeeds += static_cast<std::size_t>(std::popcount(masks.lineFeeds));
        for (std::uint64_t left = masks.borders; left != 0; left &= left - 1) {
            const std::uint32_t border = at + static_cast<std::uint32_t>(std::countr_zero(left)) / 8;
            counts.neighbours |= border == next;
            next = border + 1;
            borders[counts.borders++] = border;
        }
    }
    return counts;
}

std::size_t fillRows(const TableText& text, const std::uint32_t* borders, std::span<const RowPlace> rows,
                     std::span<float> cells, std::size_t& firstWithout) {
    const std::size_t columns = cells.size() / rows.size();
    std::size_t without = 0;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const char* begin = text.base + borders[rows[row].first] + (rows[row].first == rows[row].last ? 0 : 1);
        const RowText values{begin, text.base + borders[rows[row].last], text.base + text.end + tableSlack};
        const std::size_t count = scanRow(values, cells.subspan(row * columns, columns));
        firstWithout = count > 0 && without == 0 ? row : firstWithout;
        without += count;
    }
    return without;
}

} // namespace

const TableKernels& portableTableKernels() {
    static constexpr TableKernels kernels{"portable", findBorders, fillRows};
    return kernels;
}

const TableKernels& bestTableKernels() {
    const TableKernels* const avx2 = avx2TableKernels();
    return avx2 != nullptr ? *avx2 : portableTableKernels();
}

} // namespace orrery
