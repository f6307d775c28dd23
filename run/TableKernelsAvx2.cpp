#include "run/TableKernels.h"

#if defined(__x86_64__)

#include "run/RowScanner.h"

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstring>

// The functions that use AVX2 say so one by one: a file compiled for AVX2 as a whole would leave its copies of inline
// functions to all the others, which must run without.
#define ORRERY_AVX2 [[gnu::target("avx2,bmi,popcnt")]]
#define ORRERY_AVX2_INLINE [[gnu::target("avx2,bmi,popcnt"), gnu::always_inline]] inline

namespace orrery {

namespace {

// ---- Borders

struct Masks {
    std::uint64_t borders;
    std::uint64_t lineFeeds;
};

/// The white-space characters differ in their low halves, so each byte is compared with the one that its low half
/// selects.
ORRERY_AVX2_INLINE std::uint32_t borderMask(__m256i bytes) {
    const __m256i byLowHalf =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(' ', 0, 0, 0, 0, 0, 0, 0, 0, '\t', '\n', '\v', '\f', '\r', 0, 0));
    return static_cast<std::uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(_mm256_shuffle_epi8(byLowHalf, bytes), bytes)));
}

ORRERY_AVX2_INLINE std::uint32_t lineFeedMask(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, _mm256_set1_epi8('\n'))));
}

ORRERY_AVX2_INLINE Masks masksOf(const char* text) {
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + 32));
    return {borderMask(low) | std::uint64_t{borderMask(high)} << 32U,
            lineFeedMask(low) | std::uint64_t{lineFeedMask(high)} << 32U};
}

/// Writes the positions of the mask's bits. Eight at a time, wanted or not: a loop that ends after each bit's number
/// would be mispredicted every time.
ORRERY_AVX2_INLINE void writePositions(std::uint64_t mask, std::uint32_t at, std::size_t count, std::uint32_t* out) {
    for (std::size_t written = 0; written < count; written += 8) {
        for (std::size_t n = 0; n < 8; ++n) {
            out[written + n] = at + static_cast<std::uint32_t>(_tzcnt_u64(mask));
            mask = _blsr_u64(mask);
        }
    }
}

ORRERY_AVX2 BorderCounts findBorders(const TableText& text, std::uint32_t* borders) {
    BorderCounts counts;
    std::uint64_t carry = 1; // whether a border at the next position has a neighbour
    std::uint64_t neighbours = 0;
    for (std::uint32_t at = text.begin; at < text.end; at += 64) {
        Masks masks = masksOf(text.base + at);
        if (text.end - at < 64) {
            const std::uint64_t inside = (1ULL << (text.end - at)) - 1;
            masks = {masks.borders & inside, masks.lineFeeds & inside};
        }
        neighbours |= masks.borders & (masks.borders << 1U | carry);
        carry = masks.borders >> 63U;
        const auto count = static_cast<std::size_t>(_mm_popcnt_u64(masks.borders));
        counts.lineFeeds += static_cast<std::size_t>(_mm_popcnt_u64(masks.lineFeeds));
        writePositions(masks.borders, at, count, borders + counts.borders);
        counts.borders += count;
    }
    counts.neighbours = neighbours != 0;
    return counts;
}

// ---- Numbers: a token of up to 16 characters, digits with at most one point and a "-" before them

constexpr std::size_t longestToken = 16;
using Bytes16 = std::array<std::uint8_t, 16>;

/// Loaded from byte n on, it keeps the last n bytes of 16.
alignas(32) constexpr std::array<std::uint8_t, 32> keepLast = {
    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/// Row n closes the gap of the point at byte n by moving up all before it; row 16 is for no point.
constexpr std::array<Bytes16, longestToken + 1> makeGapClosers() {
    std::array<Bytes16, longestToken + 1> rows{};
    for (std::uint8_t point = 0; point <= longestToken; ++point) {
        for (std::uint8_t byte = 0; byte < longestToken; ++byte) {
            const bool moves = point < longestToken && byte <= point;
            rows.at(point).at(byte) = !moves ? byte : byte == 0 ? 0x80 : static_cast<std::uint8_t>(byte - 1);
        }
    }
    return rows;
}
alignas(16) constexpr auto gapClosers = makeGapClosers();

/// What the digits are divided by when the point is at byte n.
constexpr std::array<double, longestToken + 1> divisors = {1e15, 1e14, 1e13, 1e12, 1e11, 1e10, 1e9, 1e8, 1e7,
                                                           1e6,  1e5,  1e4,  1e3,  1e2,  1e1,  1e0, 1e0};

/// The number that 16 digits write: pairs, then fours, then eights, then all.
ORRERY_AVX2_INLINE std::uint64_t sixteenDigits(__m128i digits) {
    const __m128i pairs = _mm_maddubs_epi16(digits, _mm_set1_epi16(0x010A));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00010064));
    const __m128i eights = _mm_madd_epi16(_mm_packus_epi32(fours, fours), _mm_set1_epi32(0x00012710));
    const auto halves = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    return (halves & 0xFFFFFFFFU) * 100'000'000U + (halves >> 32U);
}

/// 1 for a "-", else 0. Calculated, because the flag that a comparison leaves would be put into the low byte of a
/// register that holds the last token's result, and every token wait for the one before.
ORRERY_AVX2_INLINE std::uint32_t isMinus(char c) {
    return ((static_cast<std::uint32_t>(static_cast<unsigned char>(c)) ^ '-') - 1U) >> 31U;
}

/// What a token without its sign writes: number ÷ divisors[point], where it is plain: digits with at most one point.
struct Digits {
    std::uint64_t number = 0;
    std::size_t point = 0;
    bool plain = false;
};

/// The token must have 1 to 16 characters, and 16 bytes before its end must be readable.
ORRERY_AVX2_INLINE Digits digitsOf(const char* end, std::size_t length) {
    __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(end - longestToken));
    const __m128i keep = _mm_loadu_si128(reinterpret_cast<const __m128i*>(keepLast.data() + length));
    bytes = _mm_and_si128(_mm_sub_epi8(bytes, _mm_set1_epi8('0')), keep);
    const int points = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('.' - '0')));
    const auto point = static_cast<std::size_t>(_tzcnt_u32(static_cast<unsigned>(points) | 1U << longestToken));
    bytes = _mm_shuffle_epi8(bytes, _mm_load_si128(reinterpret_cast<const __m128i*>(gapClosers[point].data())));
    const __m128i above9 = _mm_subs_epu8(bytes, _mm_set1_epi8(9));
    const bool pointAlone = ((length - 1) | (longestToken - 1 - point)) == 0;
    return {sixteenDigits(bytes), point, _mm_testz_si128(above9, above9) != 0 && !pointAlone};
}

ORRERY_AVX2_INLINE float withSign(float value, std::uint32_t negative) {
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(value) | negative << 31U);
}

/// Takes the whole token as a number, or nothing of it where it is none of the simple kind or where the nearest single
/// cannot be proved (nearestSingle has the reason).
ORRERY_AVX2_INLINE bool takeToken(const char* begin, const char* end, float& value) {
    const std::uint32_t negative = isMinus(*begin);
    const auto length = static_cast<std::size_t>(end - begin) - negative;
    if (length - 1 >= longestToken) [[unlikely]] { // 0 included
        return false;
    }
    const Digits digits = digitsOf(end, length);
    const double quotient = static_cast<double>(static_cast<std::int64_t>(digits.number)) / divisors[digits.point];
    const bool halfWay = (std::bit_cast<std::uint64_t>(quotient) & 0x1FFFFFFFU) == 0x10000000U;
    if (!digits.plain || digits.number >= 1ULL << 53U || halfWay) [[unlikely]] {
        return false;
    }
    value = withSign(static_cast<float>(quotient), negative);
    return true;
}

bool isDigit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

/// The same for a token with an exponent as it is mostly written, "e", a sign and two digits.
[[gnu::target("avx2,bmi,popcnt"), gnu::noinline]] bool takeExponentToken(const char* begin, const char* end,
                                                                         float& value) {
    constexpr std::size_t exponentLength = 4;
    const std::uint32_t negative = isMinus(*begin);
    const auto length = static_cast<std::size_t>(end - begin) - negative - exponentLength;
    const bool down = end[-3] == '-';
    if (length - 1 >= longestToken || (end[-4] | 0x20) != 'e' || (!down && end[-3] != '+') || !isDigit(end[-2]) ||
        !isDigit(end[-1])) {
        return false;
    }
    const Digits digits = digitsOf(end - exponentLength, length);
    const int exponent = (end[-2] - '0') * 10 + (end[-1] - '0');
    const int fraction = digits.point < longestToken ? static_cast<int>(longestToken - 1 - digits.point) : 0;
    const auto nearest = nearestSingle(digits.number, (down ? -exponent : exponent) - fraction);
    value = withSign(nearest.value_or(0), negative);
    return digits.plain && nearest.has_value();
}

// ---- Rows

/// How far a row is scanned. Passed by value: where its address was taken it would live in memory, and each token wait
/// for the one before.
struct RowCursor {
    const char* at;
    const std::uint32_t* border; // the first at or behind `at`
};

/// Behind the border, unless it is the line feed that ends the row, which is never passed.
ORRERY_AVX2_INLINE RowCursor behindBorder(const char* base, const std::uint32_t* border, const std::uint32_t* last) {
    const std::size_t more = border != last ? 1 : 0;
    return {base + *border + more, border + more};
}

struct ExactCell {
    RowCursor next;
    float value;
    bool found;
};

/// A cell by the exact road, and on to the token behind it where what is left between makes no difference.
[[gnu::noinline]] ExactCell takeCellExactly(const TableText& text, RowCursor row, const std::uint32_t* last) {
    const ScannedCell cell = scanCell({row.at, text.base + *last, text.base + text.end + tableSlack});
    row.at = cell.end;
    while (row.border != last && text.base + *row.border < row.at) {
        ++row.border;
    }
    if (row.border != last && isIdle(row.at, text.base + *row.border)) {
        row = {text.base + *row.border + 1, row.border + 1};
    }
    return {row, cell.value, cell.found};
}

ORRERY_AVX2_INLINE std::size_t fillRow(const TableText& text, const std::uint32_t* border, const std::uint32_t* last,
                                       std::span<float> cells) {
    const char* const base = text.base;
    RowCursor row = behindBorder(base, border, last);
    std::size_t without = 0;
    for (float& cell : cells) {
        const char* const end = base + *row.border;
        if (takeToken(row.at, end, cell) || takeExponentToken(row.at, end, cell)) [[likely]] {
            row = behindBorder(base, row.border, last);
        } else {
            const ExactCell exact = takeCellExactly(text, row, last);
            cell = exact.value;
            without += exact.found ? 0U : 1U;
            row = exact.next;
        }
    }
    return without;
}

ORRERY_AVX2 std::size_t fillRows(const TableText& text, const std::uint32_t* borders, std::span<const RowPlace> rows,
                                 std::span<float> cells, std::size_t& firstWithout) {
    const std::size_t columns = cells.size() / rows.size();
    std::size_t without = 0;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const std::size_t count =
            fillRow(text, borders + rows[row].first, borders + rows[row].last, cells.subspan(row * columns, columns));
        firstWithout = count > 0 && without == 0 ? row : firstWithout;
        without += count;
    }
    return without;
}

} // namespace

const TableKernels* avx2TableKernels() {
    static constexpr TableKernels kernels{"AVX2", findBorders, fillRows};
    static const bool here =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("popcnt");
    return here ? &kernels : nullptr;
}

} // namespace orrery

#else

namespace orrery {

const TableKernels* avx2TableKernels() {
    return nullptr;
}

} // namespace orrery

#endif
